#pragma once

#include <fmt/format.h>

#include <string>
#include <string_view>

namespace stowhaven {

// The bytes of resources/strings/en.json, built into the program.
std::string_view embeddedStringsTable();

// The user texts of the program. Screens, alerts and progress lines name a text by its
// upper-case key ("BACKUP_DONE"); the English texts come from the embedded table, which is
// read once, on first use, from any thread.
class Strings {
public:
    // The text of the key, or the key itself when the table has no such entry, as the device
    // answers. Each missing key is logged once.
    static std::string localized(std::string_view key);

    // The text of the key with its "{0}", "{1}"... filled in from the arguments. Never throws:
    // a text whose placeholders don't fit the arguments is logged and answered as it stands.
    template <typename... Args>
    static std::string format(std::string_view key, const Args&... args) {
        return formatWith(key, fmt::make_format_args(args...));
    }

private:
    static std::string formatWith(std::string_view key, fmt::format_args args);
};

}  // namespace stowhaven
