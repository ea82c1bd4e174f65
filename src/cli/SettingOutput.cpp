#include "cli/SettingOutput.h"

#include <fmt/format.h>

#include <set>

namespace stowhaven {

namespace {

constexpr const char* kMask = "********";

}  // namespace

std::string SettingOutput::text(const PlistValue& value) {
    if (const auto* string = value.asString()) return *string;
    if (const auto boolean = value.asBoolean()) return *boolean ? "true" : "false";
    if (const auto real = value.asReal()) return fmt::format("{}", *real);
    if (value.asArray() != nullptr) return json(value).dump();
    return value.description();
}

nlohmann::json SettingOutput::json(const PlistValue& value) {
    switch (value.kind()) {
        case PlistKind::Null:
            return nullptr;
        case PlistKind::Boolean:
            return *value.asBoolean();
        case PlistKind::Integer:
            if (const auto integer = value.asInteger()) return *integer;
            return *value.asUnsignedInteger();
        case PlistKind::Real:
            return *value.asReal();
        case PlistKind::String:
            return *value.asString();
        case PlistKind::Array: {
            nlohmann::json array = nlohmann::json::array();
            for (const PlistValue& element : *value.asArray()) array.push_back(json(element));
            return array;
        }
        case PlistKind::Dictionary: {
            nlohmann::json object = nlohmann::json::object();
            for (const auto& [key, element] : *value.asDictionary()) object[key] = json(element);
            return object;
        }
        case PlistKind::Data:
        case PlistKind::Date:
        case PlistKind::Uid:
            return value.description();
    }
    return nullptr;
}

PlistValue SettingOutput::masked(const PlistValue& value) {
    if (const auto* string = value.asString()) return string->empty() ? value : PlistValue(kMask);
    if (const auto* array = value.asArray()) {
        PlistValue::Array hidden;
        for (const PlistValue& element : *array) hidden.push_back(masked(element));
        return hidden;
    }
    // In a secret's entries every text is hidden but those known to tell only where and who.
    if (const auto* dictionary = value.asDictionary()) {
        static const std::set<std::string, std::less<>> kShown = {"host", "login", "rootDir", "port", "uid", "app_key"};
        PlistValue::Dictionary hidden = *dictionary;
        for (auto& [key, member] : hidden) {
            if (!kShown.contains(key)) member = masked(member);
        }
        return hidden;
    }
    return value;
}

}  // namespace stowhaven
