#include "platform/plist/LibplistExactScalars.h"

#include <bit>
#include <string>
#include <string_view>

namespace stowhaven::libplist {

namespace {

constexpr std::string_view kHeader = "bplist00";
constexpr char kDateMarker = 0x33;
constexpr char kSixteenByteIntegerMarker = 0x14;
constexpr std::size_t kDateSize = 1 + 8;

void appendBigEndian(std::string& out, std::uint64_t value, std::size_t width) {
    for (std::size_t i = width; i-- > 0;) out += static_cast<char>(value >> (8 * i) & 0xFF);
}

std::uint64_t readBigEndian(std::string_view bytes) {
    std::uint64_t value = 0;
    for (const char byte : bytes) value = value << 8 | static_cast<std::uint8_t>(byte);
    return value;
}

// The first object of the node's binary form, which libplist writes right after the header.
std::string soleObject(plist_t node) {
    char* raw = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(node, &raw, &length);
    const Malloced<char> bytes(raw);
    if (!bytes || length <= kHeader.size()) return {};
    return std::string(raw + kHeader.size(), length - kHeader.size());
}

Node nodeFromSoleObject(std::string_view object) {
    std::string bytes(kHeader);
    bytes += object;
    const std::size_t offsetTable = bytes.size();
    bytes += static_cast<char>(kHeader.size());  // the offset of the one object
    bytes.append(6, '\0');
    bytes += '\1';  // bytes per offset
    bytes += '\1';  // bytes per object reference
    appendBigEndian(bytes, 1, 8);  // objects
    appendBigEndian(bytes, 0, 8);  // the top object
    appendBigEndian(bytes, offsetTable, 8);
    plist_t node = nullptr;
    plist_from_bin(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &node);
    return Node(node);
}

}  // namespace

std::optional<double> exactDateSeconds(plist_t dateNode) {
    const std::string object = soleObject(dateNode);
    if (object.size() < kDateSize || object[0] != kDateMarker) return std::nullopt;
    return std::bit_cast<double>(readBigEndian(std::string_view(object).substr(1, 8)));
}

bool isLargeUnsigned(plist_t integerNode) {
    const std::string object = soleObject(integerNode);
    return !object.empty() && object[0] == kSixteenByteIntegerMarker;
}

Node newExactDateNode(double secondsSinceReferenceDate) {
    std::string object(1, kDateMarker);
    appendBigEndian(object, std::bit_cast<std::uint64_t>(secondsSinceReferenceDate), 8);
    return nodeFromSoleObject(object);
}

Node newLargeUnsignedNode(std::uint64_t value) {
    std::string object(1, kSixteenByteIntegerMarker);
    appendBigEndian(object, 0, 8);  // the high half of a 128-bit integer
    appendBigEndian(object, value, 8);
    return nodeFromSoleObject(object);
}

}  // namespace stowhaven::libplist
