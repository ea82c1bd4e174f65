#pragma once

#include <string>
#include <vector>

namespace stowhaven {

// The language and locale that the system is set to: on this host, the locale variables
// of the environment (LANGUAGE, LC_ALL, LC_MESSAGES, LANG).
class SystemLocale {
public:
    // The languages in the order the user prefers them, as the device names them:
    // "de-DE", "fr", "en". The "C" locale prefers English.
    static std::vector<std::string> preferredLanguages();
    // "de_DE" for "de_DE.UTF-8@euro"; "en_US_POSIX" for the "C" locale.
    static std::string identifier();
};

}  // namespace stowhaven
