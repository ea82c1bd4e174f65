#include "core/Text.h"

#include "platform/AsciiCase.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace stowhaven::textutil {

namespace {

constexpr std::string_view kWhiteSpaceAndNewlines = " \t\n\r\v\f";

}  // namespace

std::string lowered(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), asciiLower);
    return result;
}

std::string uppered(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), asciiUpper);
    return result;
}

std::string firstLetterUppered(std::string_view text) {
    std::string result = lowered(text);
    if (!result.empty()) result.front() = asciiUpper(result.front());
    return result;
}

std::string trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(kWhiteSpaceAndNewlines);
    if (first == std::string_view::npos) return {};
    const auto last = text.find_last_not_of(kWhiteSpaceAndNewlines);
    return std::string(text.substr(first, last - first + 1));
}

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> pieces;
    std::size_t start = 0;
    for (auto found = text.find(separator); found != std::string_view::npos; found = text.find(separator, start)) {
        pieces.emplace_back(text.substr(start, found - start));
        start = found + 1;
    }
    pieces.emplace_back(text.substr(start));
    return pieces;
}

std::string joined(const std::vector<std::string>& pieces, std::string_view separator) {
    std::string text;
    for (const std::string& piece : pieces) {
        if (!text.empty()) text += separator;
        text += piece;
    }
    return text;
}

std::weak_ordering caseInsensitiveOrder(std::string_view left, std::string_view right) {
    // Compared as unsigned bytes, so that text beyond ASCII sorts after it.
    const std::string a = lowered(left), b = lowered(right);
    return std::lexicographical_compare_three_way(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return static_cast<unsigned char>(x) <=> static_cast<unsigned char>(y);
    });
}

bool containsCaseInsensitive(std::string_view text, std::string_view part) {
    return lowered(text).find(lowered(part)) != std::string::npos;
}

std::string replacingAll(std::string text, std::string_view from, std::string_view to) {
    if (from.empty()) return text;
    for (auto found = text.find(from); found != std::string::npos; found = text.find(from, found + to.size())) {
        text.replace(found, from.size(), to);
    }
    return text;
}

std::string capitalized(std::string text) {
    bool atWordStart = true;
    for (char& c : text) {
        const bool isUpper = c >= 'A' && c <= 'Z';
        const bool isLetter = isUpper || (c >= 'a' && c <= 'z');
        if (isLetter && atWordStart && !isUpper) c = static_cast<char>(c - 'a' + 'A');
        if (isLetter && !atWordStart && isUpper) c = asciiLower(c);
        atWordStart = !isLetter && !(c >= '0' && c <= '9');
    }
    return text;
}

std::string htmlEscaped(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            case '\'':
                escaped += "&#39;";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

int hexDigitValue(char digit) {
    if (digit >= '0' && digit <= '9') return digit - '0';
    if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
    if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
    return -1;
}

std::optional<std::string> percentDecoded(std::string_view text, bool form) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '%') {
            decoded += form && text[at] == '+' ? ' ' : text[at];
            continue;
        }
        const int high = at + 2 < text.size() ? hexDigitValue(text[at + 1]) : -1;
        const int low = at + 2 < text.size() ? hexDigitValue(text[at + 2]) : -1;
        if (high < 0 || low < 0) return std::nullopt;
        decoded += static_cast<char>(high * 16 + low);
        at += 2;
    }
    return decoded;
}

std::string percentEncoded(std::string_view text) {
    static constexpr char kHexDigits[] = "0123456789ABCDEF";
    std::string encoded;
    for (const char c : text) {
        const bool unreserved = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                                c == '-' || c == '.' || c == '_' || c == '~';
        if (unreserved) {
            encoded += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            encoded += {'%', kHexDigits[byte >> 4], kHexDigits[byte & 0xF]};
        }
    }
    return encoded;
}

std::string decimalText(double value) {
    if (!std::isfinite(value)) return fmt::format("{}", value);
    std::string text = fmt::format("{:.3f}", value);
    while (text.back() == '0') text.pop_back();
    if (text.back() == '.') text.pop_back();
    if (text == "-0") return "0";
    const std::size_t digitsStart = text.front() == '-' ? 1 : 0;
    const std::size_t integerEnd = std::min(text.find('.'), text.size());
    std::string grouped = text.substr(0, digitsStart);
    for (std::size_t digit = digitsStart; digit < integerEnd; ++digit) {
        if (digit > digitsStart && (integerEnd - digit) % 3 == 0) grouped += ',';
        grouped += text[digit];
    }
    return grouped + text.substr(integerEnd);
}

std::string orNull(const std::optional<std::string>& value) { return value.value_or("(null)"); }

}  // namespace stowhaven::textutil
