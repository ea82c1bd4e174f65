// How the OneDrive engine finds its folders in the account: the top folder, the product
// folder and this device's folder, made where missing.

#include "core/Supervisor.h"
#include "platform/AsciiCase.h"
#include "platform/Log.h"
#include "storage/StorageLayout.h"
#include "storage/onedrive/SkyDriveWrapper.h"

namespace stowhaven {

// The folders in hand stay usable until the new ones are known: a flush of the cache may run
// beside a job.
bool SkyDriveWrapper::retrieveRootFolder() {
    const auto top = topFolder();
    if (!top) {
        SH_LOG("Couldn't read the top folder!");
        return false;
    }
    const auto main = findOrMakeFolder(top->id, std::string(StorageLayout::kBaseDirectoryName));
    const auto device = main ? deviceFolder(main->id) : std::nullopt;
    if (!device) return false;
    std::lock_guard lock(mutex_);
    mainDirectoryData_ = main;
    rootDirectoryData_ = device;
    return true;
}

std::optional<SkyDriveEntry> SkyDriveWrapper::findOrMakeFolder(const std::string& parentId, const std::string& name) {
    const auto children = loadFileListFrom(parentId);
    if (!children) return std::nullopt;
    for (const SkyDriveEntry& child : *children) {
        if (child.isFolder && equalsIgnoringAsciiCase(child.name, name)) return child;
    }
    auto made = createDirectory(name, parentId);
    if (made) SH_LOG("<{}> directory created!", name);
    return made;
}

std::optional<SkyDriveEntry> SkyDriveWrapper::deviceFolder(const std::string& mainId) {
    const Supervisor& supervisor = Supervisor::shared();
    const std::string& deviceName = supervisor.deviceName();
    const std::string& deviceUID = supervisor.deviceUID();
    const auto children = loadFileListFrom(mainId);
    if (!children) return std::nullopt;
    std::optional<SkyDriveEntry> older;
    for (const SkyDriveEntry& child : *children) {
        if (!child.isFolder) continue;
        if (equalsIgnoringAsciiCase(child.name, deviceName)) return child;
        if (equalsIgnoringAsciiCase(child.name, deviceUID)) older = child;
    }
    if (older) {
        // A folder of an older version, named after the device's identifier.
        SH_LOG("Migrating from data directory from {} to {}...", older->name, deviceName);
        if (rename(older->id, deviceName)) {
            SH_LOG("Migrated from data directory from {} to {}!", older->name, deviceName);
            older->name = deviceName;
        } else {
            SH_LOG("FAILED to migrate from data directory from {} to {}. Error: {}!", older->name, deviceName,
                   errorMessage().value_or("(null)"));
        }
        setErrorMessage(std::nullopt);
        return older;
    }
    auto made = createDirectory(deviceName, mainId);
    if (made) SH_LOG("<{}> directory created under <Stowhaven>!", deviceName);
    return made;
}

}  // namespace stowhaven
