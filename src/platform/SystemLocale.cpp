#include "platform/SystemLocale.h"

#include "platform/Environment.h"

#include <algorithm>
#include <string_view>

namespace stowhaven {

namespace {

// The locale of the messages, as the C library chooses it.
std::string localeName() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (std::string value = environmentVariable(name).value_or(""); !value.empty()) return value;
    }
    return "C";
}

bool isPortable(std::string_view name) { return name == "C" || name == "POSIX" || name.starts_with("C."); }

// "de_DE.UTF-8@euro" -> "de_DE".
std::string withoutCodesetAndModifier(std::string_view name) {
    return std::string(name.substr(0, name.find_first_of(".@")));
}

std::string languageTag(std::string_view name) {
    std::string tag = withoutCodesetAndModifier(name);
    std::replace(tag.begin(), tag.end(), '_', '-');
    return tag;
}

}  // namespace

std::vector<std::string> SystemLocale::preferredLanguages() {
    const std::string locale = localeName();
    if (isPortable(locale)) return {"en"};
    // GNU's LANGUAGE, a list split by colons, counts only beside a real locale.
    const std::string preferred = environmentVariable("LANGUAGE").value_or("");
    std::string_view list = preferred.empty() ? locale : preferred;
    std::vector<std::string> languages;
    while (!list.empty()) {
        const auto colon = list.find(':');
        if (const std::string tag = languageTag(list.substr(0, colon)); !tag.empty()) languages.push_back(tag);
        if (colon == std::string_view::npos) break;
        list.remove_prefix(colon + 1);
    }
    return languages;
}

std::string SystemLocale::identifier() {
    const std::string locale = localeName();
    return isPortable(locale) ? "en_US_POSIX" : withoutCodesetAndModifier(locale);
}

}  // namespace stowhaven
