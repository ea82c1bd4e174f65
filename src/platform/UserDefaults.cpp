#include "platform/UserDefaults.h"

#include "platform/DeviceRoot.h"

#include <memory>
#include <mutex>
#include <vector>

namespace stowhaven {

std::string UserDefaults::pathForUser(const std::string& user) {
    return DeviceRoot::var() + "/" + user + "/Library/Preferences/com.larkmoor.stowhaven.plist";
}

PreferenceStore& UserDefaults::standard() {
    static std::mutex mutex;
    // Stores of earlier roots stay alive: callers may still hold references to them.
    static std::vector<std::unique_ptr<PreferenceStore>> stores;
    static std::string openedRoot;

    std::lock_guard lock(mutex);
    const std::string root = DeviceRoot::get();
    if (stores.empty() || openedRoot != root) {
        stores.push_back(std::make_unique<PreferenceStore>(pathForUser("mobile")));
        openedRoot = root;
    }
    return *stores.back();
}

}  // namespace stowhaven
