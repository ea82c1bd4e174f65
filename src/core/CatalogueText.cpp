#include "core/CatalogueText.h"

#include <algorithm>

namespace stowhaven::catalogue_text {

namespace {

constexpr std::string_view kWhiteSpaceAndNewlines = " \t\n\r\v\f";

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

std::string lowered(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), lower);
    return result;
}

}  // namespace

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

std::weak_ordering caseInsensitiveOrder(std::string_view left, std::string_view right) {
    // Compared as unsigned bytes, so that text beyond ASCII sorts after it.
    const std::string a = lowered(left), b = lowered(right);
    return std::lexicographical_compare_three_way(
        a.begin(), a.end(), b.begin(), b.end(),
        [](char x, char y) { return static_cast<unsigned char>(x) <=> static_cast<unsigned char>(y); });
}

bool containsCaseInsensitive(std::string_view text, std::string_view part) {
    return lowered(text).find(lowered(part)) != std::string::npos;
}

std::string orNull(const std::optional<std::string>& value) { return value.value_or("(null)"); }

}  // namespace stowhaven::catalogue_text
