#include "archive/Base64.h"

#include <array>
#include <cstdint>

namespace stowhaven {

namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kPadding = '=';

constexpr std::int8_t kNotInAlphabet = -1;
constexpr std::int8_t kSkipped = -2;

constexpr std::array<std::int8_t, 256> makeDecodingTable() {
    std::array<std::int8_t, 256> table{};
    table.fill(kNotInAlphabet);
    for (std::size_t index = 0; index < kAlphabet.size(); ++index) {
        table[static_cast<unsigned char>(kAlphabet[index])] = static_cast<std::int8_t>(index);
    }
    for (const char blank : {' ', '\t', '\r', '\n'}) table[static_cast<unsigned char>(blank)] = kSkipped;
    return table;
}

constexpr auto kDecodingTable = makeDecodingTable();

}  // namespace

std::string Base64::encode(std::string_view bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    std::size_t index = 0;
    const auto byteAt = [&](std::size_t position) { return static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[position])); };
    for (; index + 3 <= bytes.size(); index += 3) {
        const std::uint32_t group = byteAt(index) << 16 | byteAt(index + 1) << 8 | byteAt(index + 2);
        for (const int shift : {18, 12, 6, 0}) text += kAlphabet[group >> shift & 0x3F];
    }
    const std::size_t remaining = bytes.size() - index;
    if (remaining > 0) {
        const std::uint32_t group = byteAt(index) << 16 | (remaining == 2 ? byteAt(index + 1) << 8 : 0);
        text += kAlphabet[group >> 18 & 0x3F];
        text += kAlphabet[group >> 12 & 0x3F];
        text += remaining == 2 ? kAlphabet[group >> 6 & 0x3F] : kPadding;
        text += kPadding;
    }
    return text;
}

std::optional<std::string> Base64::decode(std::string_view text) {
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3);
    std::uint32_t group = 0;
    std::size_t charactersInGroup = 0;
    std::size_t padding = 0;
    for (const char character : text) {
        if (character == kPadding) {
            // At most two, and only in the last two places of a group.
            if (charactersInGroup + padding < 2 || ++padding > 2) return std::nullopt;
            continue;
        }
        const std::int8_t sextet = kDecodingTable[static_cast<unsigned char>(character)];
        if (sextet == kSkipped) continue;
        if (sextet == kNotInAlphabet || padding > 0) return std::nullopt;
        group = group << 6 | static_cast<std::uint32_t>(sextet);
        if (++charactersInGroup == 4) {
            bytes += static_cast<char>(group >> 16 & 0xFF);
            bytes += static_cast<char>(group >> 8 & 0xFF);
            bytes += static_cast<char>(group & 0xFF);
            group = 0;
            charactersInGroup = 0;
        }
    }
    if (charactersInGroup + padding != 0 && charactersInGroup + padding != 4) return std::nullopt;
    if (padding > 0) {
        group <<= 6 * padding;
        bytes += static_cast<char>(group >> 16 & 0xFF);
        if (padding == 1) bytes += static_cast<char>(group >> 8 & 0xFF);
    }
    return bytes;
}

}  // namespace stowhaven
