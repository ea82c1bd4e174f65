#pragma once

#include "platform/PreferenceStore.h"

namespace stowhaven {

// The program's settings file on the device under the current root:
// <var>/mobile/Library/Preferences/com.larkmoor.stowhaven.plist. A change of root (tests)
// opens that root's file, with no defaults registered yet.
class UserDefaults {
public:
    static PreferenceStore& standard();

    // The settings file of a user of the device ("mobile" or "root").
    static std::string pathForUser(const std::string& user);
};

}  // namespace stowhaven
