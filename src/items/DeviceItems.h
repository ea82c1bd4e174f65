#pragma once

#include "items/PreferenceFile.h"
#include "items/RepositorySource.h"

#include <memory>
#include <vector>

namespace stowhaven {

// What the device holds of the small items a backup takes: its preference files, its
// SpringBoard files and its package manager's sources. Each scan reads the device anew.
class DeviceItems {
public:
    using PreferenceFiles = std::vector<std::shared_ptr<PreferenceFile>>;
    using Sources = std::vector<std::shared_ptr<RepositorySource>>;

    // The package manager's own settings, which every backup keeps.
    static constexpr const char* kCydiaPreferencesName = "com.saurik.Cydia.plist";
    static constexpr const char* kCydiaPreferencesPath = "/var/mobile/Library/Preferences/com.saurik.Cydia.plist";

    // The property lists of the three preference folders, sorted by name; the package
    // manager's own list always selected. None when a folder can't be listed.
    static PreferenceFiles preferenceFiles();
    // The SpringBoard's state and icon layout files.
    static PreferenceFiles springboardFiles();
    // The package manager's sources, but the "stable" one of the system's own source.
    static Sources repositorySources();
    // The sources of the package manager's "CydiaSources" setting, as repositorySources()
    // takes them.
    static Sources sourcesIn(const PlistValue::Dictionary& cydiaSources);
    // The package manager's sections, as its settings keep them; null without any.
    static PlistValue cydiaSections();
};

}  // namespace stowhaven
