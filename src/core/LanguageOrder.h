#pragma once

#include "platform/PreferenceStore.h"

#include <string>
#include <vector>

namespace stowhaven {

// The language steps of the program's start: it speaks English unless the user enabled
// localisation in its settings.
class LanguageOrder {
public:
    // Drops the stored "AppleLanguages", so that the system's languages count again. Unless
    // "EnableLocalization" is set, stores them back with "en" swapped into first place, or
    // just "en" when it isn't among them.
    static void setUp(PreferenceStore& defaults, const std::vector<std::string>& systemLanguages);
};

}  // namespace stowhaven
