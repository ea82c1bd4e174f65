#include "core/CydiaFile.h"

#include "core/Text.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace stowhaven {

namespace {

// The leading integer of a text, as the device's string class reads it: blanks skipped,
// an optional sign, digits up to the first other character; out of range it saturates.
std::int64_t integerValue(std::string_view text) {
    std::size_t at = text.find_first_not_of(" \t\n\r\v\f");
    if (at == std::string_view::npos) return 0;
    const bool negative = text[at] == '-';
    if (text[at] == '-' || text[at] == '+') ++at;
    std::int64_t value = 0;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
        const int digit = text[at] - '0';
        if (value > (std::numeric_limits<std::int64_t>::max() - digit) / 10) {
            return negative ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
        }
        value = value * 10 + digit;
    }
    return negative ? -value : value;
}

// "8.1.2" reads as the number 812 of 3 parts.
struct VersionNumber {
    std::uint64_t number;
    std::uint64_t parts;
};

VersionNumber versionNumber(std::string_view version) {
    std::string digits(version);
    digits.erase(std::remove(digits.begin(), digits.end(), '.'), digits.end());
    return {static_cast<std::uint64_t>(integerValue(digits)),
            static_cast<std::uint64_t>(std::count(version.begin(), version.end(), '.')) + 1};
}

}  // namespace

bool CydiaFile::isFirmwareCompatible(const std::string& deviceSystemVersion) const {
    if (!firmwareSpecs_) return false;
    // "firmware (>= 3.0)": the operator and the version after the last "(" (the whole
    // text if there is none: npos + 1 is 0).
    std::string requirement = firmwareSpecs_->substr(firmwareSpecs_->rfind('(') + 1);
    requirement.erase(std::remove(requirement.begin(), requirement.end(), ')'), requirement.end());
    const std::vector<std::string> pieces = textutil::split(requirement, ' ');
    const std::string& operation = pieces.front();

    VersionNumber device = versionNumber(deviceSystemVersion);
    VersionNumber package = versionNumber(pieces.back());
    // The numbers are aligned by multiplying with the difference of the part counts, not by
    // a power of ten: "8.1.2" against ">= 3.0" compares 812 with 30, and "6.1.3" meets
    // ">= 7.0" (613 against 70). Packages have always been judged so, and are kept so.
    // Unsigned arithmetic, as the comparison is unsigned too.
    if (device.parts > package.parts) package.number *= device.parts - package.parts;
    if (device.parts < package.parts) device.number *= package.parts - device.parts;

    if (operation == ">=") return device.number >= package.number;
    if (operation == ">>") return device.number > package.number;
    if (operation == "<=") return device.number <= package.number;
    return device.number < package.number;
}

}  // namespace stowhaven
