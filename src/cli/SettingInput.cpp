#include "cli/SettingInput.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace stowhaven {

namespace {

bool equalsIgnoringCase(std::string_view text, std::string_view word) {
    return std::equal(text.begin(), text.end(), word.begin(), word.end(), [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
    });
}

std::optional<PlistValue> parseBoolean(std::string_view text) {
    for (std::string_view yes : {"true", "yes", "1"}) {
        if (equalsIgnoringCase(text, yes)) return PlistValue(true);
    }
    for (std::string_view no : {"false", "no", "0"}) {
        if (equalsIgnoringCase(text, no)) return PlistValue(false);
    }
    return std::nullopt;
}

// The whole text, and nothing but a number of that type.
template <typename Number>
std::optional<Number> parseNumber(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

std::optional<PlistValue> parseFloat(std::string_view text) {
    const auto number = parseNumber<double>(text);
    if (!number || !std::isfinite(*number)) return std::nullopt;
    return PlistValue(*number);
}

}  // namespace

std::optional<PlistValue> SettingInput::parse(SettingKind kind, std::string_view text, std::string& problem) {
    std::optional<PlistValue> value;
    switch (kind) {
        case SettingKind::Boolean:
            value = parseBoolean(text);
            break;
        case SettingKind::Integer:
            value = parseNumber<std::int64_t>(text);
            break;
        case SettingKind::Float:
            value = parseFloat(text);
            break;
        case SettingKind::String:
            return PlistValue(text);
        case SettingKind::Date:
        case SettingKind::Array:
            problem = fmt::format("settings of kind {} can't be set from the command line", nameOf(kind));
            return std::nullopt;
    }
    if (!value) problem = fmt::format("<{}> is no {}", text, nameOf(kind));
    return value;
}

std::optional<PlistValue> SettingInput::parse(const SettingKey& key, std::string_view text, std::string& problem) {
    auto value = parse(key.kind, text, problem);
    if (!value || !key.range) return value;
    const IntegerRange range = *key.range;
    const std::int64_t number = *value->asInteger();
    if (range.contains(number) && (range.lowest < 0 || !text.starts_with('-'))) return value;
    problem = fmt::format("<{}> is outside {} to {}", text, range.lowest, range.highest);
    return std::nullopt;
}

}  // namespace stowhaven
