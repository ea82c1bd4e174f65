#include "core/LanguageOrder.h"

#include "platform/Log.h"
#include "platform/SystemLocale.h"

#include <fmt/ranges.h>

#include <algorithm>

namespace stowhaven {

namespace {

constexpr const char* kLanguagesKey = "AppleLanguages";

std::vector<std::string> englishFirst(std::vector<std::string> languages) {
    const auto english = std::find(languages.begin(), languages.end(), "en");
    if (english == languages.end()) return {"en"};
    std::iter_swap(languages.begin(), english);
    return languages;
}

}  // namespace

void LanguageOrder::setUp(PreferenceStore& defaults, const std::vector<std::string>& systemLanguages) {
    // Once the program's own value is gone, the key reads as the system's list again.
    defaults.remove(kLanguagesKey);
    defaults.synchronize();
    std::vector<std::string> languages = systemLanguages;
    SH_LOG("User pref supported languages: {}", fmt::join(languages, ", "));

    if (!defaults.boolean("EnableLocalization")) {
        SH_LOG("Localization NOT Enabled!");
        languages = englishFirst(std::move(languages));
        defaults.set(kLanguagesKey, PlistValue::Array(languages.begin(), languages.end()));
    } else {
        SH_LOG("Localization Enabled!");
        defaults.remove(kLanguagesKey);
    }
    defaults.synchronize();

    SH_LOG("LANG:{} | LOCALE:{} <{}>", languages.empty() ? "(null)" : languages.front(), SystemLocale::identifier(),
           fmt::join(languages, ", "));
}

}  // namespace stowhaven
