#include "cli/SettingInput.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

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

// Reads a JSON array of strings and nothing else. Anything else stops the reading at once,
// so that no nesting, however deep, is ever built.
class StringListReader final : public nlohmann::json_sax<nlohmann::json> {
public:
    bool null() override { return false; }
    bool boolean(bool) override { return false; }
    bool number_integer(number_integer_t) override { return false; }
    bool number_unsigned(number_unsigned_t) override { return false; }
    bool number_float(number_float_t, const string_t&) override { return false; }
    bool binary(binary_t&) override { return false; }
    bool start_object(std::size_t) override { return false; }
    bool key(string_t&) override { return false; }
    bool end_object() override { return false; }
    bool string(string_t& text) override {
        if (!inList_) return false;
        entries_.emplace_back(std::move(text));
        return true;
    }
    bool start_array(std::size_t) override {
        if (inList_ || ended_) return false;
        inList_ = true;
        return true;
    }
    bool end_array() override {
        inList_ = false;
        ended_ = true;
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override { return false; }

    std::optional<PlistValue> list(std::string_view text) {
        if (!nlohmann::json::sax_parse(text, this) || !ended_) return std::nullopt;
        return PlistValue(std::move(entries_));
    }

private:
    bool inList_ = false;
    bool ended_ = false;
    PlistValue::Array entries_;
};

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
        case SettingKind::Array:
            value = StringListReader().list(text);
            if (!value) problem = fmt::format("<{}> is no JSON array of strings, such as [\"a\",\"b\"]", text);
            return value;
        case SettingKind::Date:
            problem = fmt::format("settings of kind {} can't be set from the command line", nameOf(kind));
            return std::nullopt;
    }
    if (!value) problem = fmt::format("<{}> is no {}", text, nameOf(kind));
    return value;
}

std::optional<PlistValue> SettingInput::parse(const SettingKey& key, std::string_view text, std::string& problem) {
    // The saved hosts are lists of dictionaries with passwords, made by logging in.
    if (key.kind == SettingKind::Array && key.secret) {
        problem = "this list is made by logging in (\"stowhaven storage login\"), not typed in";
        return std::nullopt;
    }
    auto value = parse(key.kind, text, problem);
    if (!value || !key.range) return value;
    const IntegerRange range = *key.range;
    const std::int64_t number = *value->asInteger();
    if (range.contains(number) && (range.lowest < 0 || !text.starts_with('-'))) return value;
    problem = fmt::format("<{}> is outside {} to {}", text, range.lowest, range.highest);
    return std::nullopt;
}

}  // namespace stowhaven
