#pragma once

#include "core/SettingsKeys.h"

#include <optional>
#include <string>
#include <string_view>

namespace stowhaven {

// A setting's value as the user types it, checked against the key's kind before anything
// is stored.
class SettingInput {
public:
    // Booleans are true/false, yes/no or 1/0 in any case; integers are whole decimal numbers
    // in 64 bits; floats are finite decimal numbers; strings are taken as they stand; lists are
    // JSON arrays of strings, as --json prints them. Dates are not typed in. Nothing, with the
    // reason in `problem`, for text that doesn't fit.
    static std::optional<PlistValue> parse(SettingKind kind, std::string_view text, std::string& problem);
    // As above for the key's kind; an integer must also lie in the key's range, and an
    // integer that can't be below 0 is typed as digits only. The lists of saved hosts, which
    // hold passwords, are not typed in.
    static std::optional<PlistValue> parse(const SettingKey& key, std::string_view text, std::string& problem);
};

}  // namespace stowhaven
