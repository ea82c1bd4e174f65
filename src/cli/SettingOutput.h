#pragma once

#include "platform/plist/PlistValue.h"

#include <nlohmann/json.hpp>

#include <string>

namespace stowhaven {

// How the program shows a setting's value on the terminal.
class SettingOutput {
public:
    // As it would be typed in: true, 5, 0.5, the text itself, a list as a JSON array on one
    // line; dates and dictionaries as the device describes them.
    static std::string text(const PlistValue& value);
    // Dates and data as the text of their description.
    static nlohmann::json json(const PlistValue& value);
    // A secret's value with its texts hidden: a password or token itself, or the "password"
    // of each saved host.
    static PlistValue masked(const PlistValue& value);
};

}  // namespace stowhaven
