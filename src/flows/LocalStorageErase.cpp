#include "flows/LocalStorageErase.h"

#include "core/ProcessFlags.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "storage/StorageLayout.h"

#include <string>

namespace stowhaven {

void eraseLocalSessions() {
    const std::string folder = localStoragePath();
    std::string error;
    const auto names = FileManager::contentsOfDirectory(folder, &error);
    if (!names) {
        SH_LOG("Couldn't list <{}>! Error: {}", folder, error);
        return;
    }
    for (const std::string& name : *names) {
        // A session folder is named by its stamp, its history file by the stamp and the suffix.
        if (!StorageLayout::dateOfHistoryFile(name)) continue;
        const std::string path = folder + "/" + name;
        if (FileManager::removeItem(path, &error)) {
            SH_LOG("Removed <{}>!", path);
        } else {
            SH_LOG("Couldn't remove <{}>! Error: {}", path, error);
        }
    }
}

}  // namespace stowhaven
