#include "core/Supervisor.h"

#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Strings.h"
#include "platform/UserDefaults.h"

namespace stowhaven {

void Supervisor::resetAllSettings() {
    SH_LOG("Resetting all settings...");
    const bool resetSettings = lowLevelGetBooleanPreferencesDataForKey("ResetSettings");
    if (!resetSettings && lowLevelGetBooleanPreferencesDataForKey("ResetCloudServices")) {
        lowLevelStorePreferencesData(false, "ResetCloudServices");
    }
    setStorageToLocal();
    persistStorageType();
    // The files go last, as anything stored afterwards would bring one back. A missing file
    // reads as a fresh start: no reset asked for, local storage.
    if (resetSettings) {
        removeSettingsFile("mobile");
        removeSettingsFile("root");
        UserDefaults::standard().reload();
    }
    showAlert(Strings::localized("RESET_SETTINGS_TITLE"), Strings::localized("RESET_SETTINGS_MESSAGE"),
              [this](std::size_t) {
                  ExitHandler endProcess;
                  {
                      std::lock_guard lock(mutex_);
                      endProcess = exitHandler_;
                  }
                  endProcess(0);
              });
}

void Supervisor::removeSettingsFile(const std::string& user) {
    const std::string path = UserDefaults::pathForUser(user);
    std::string error;
    if (FileManager::removeItem(path, &error)) {
        SH_LOG("<{}> removed!", path);
    } else {
        SH_LOG("Couldn't <{}> removed! Error: {}", path, error);
    }
}

}  // namespace stowhaven
