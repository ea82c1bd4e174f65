#include "items/ArchivableFolders.h"

#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "items/ArchivableFolderTable.h"
#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/Strings.h"

#include <fmt/format.h>

#include <algorithm>
#include <mutex>

namespace stowhaven {

namespace {

std::mutex gMutex;
ArchivableFolders::Folders gFolders;

bool meetsCondition(const ArchivableFolderRow& row) {
    switch (row.condition) {
        case ArchivableFolderRow::Condition::Always:
            return true;
        case ArchivableFolderRow::Condition::IPhoneOnly:
            return Supervisor::shared().devicePlatform().starts_with("iPhone");
        case ArchivableFolderRow::Condition::WithVoiceMemosApplication: {
            bool isDirectory = false;
            return FileManager::fileExists(DeviceRoot::path("/Applications/VoiceMemos.app"), isDirectory) &&
                   isDirectory;
        }
    }
    return false;
}

std::string nameOf(const ArchivableFolderRow& row) {
    if (row.nameKey == nullptr) return row.name;
    const std::string text = Strings::localized(row.nameKey);
    return row.name == nullptr ? text : fmt::format(fmt::runtime(row.name), text);
}

std::shared_ptr<ArchivableFolder> folderOf(const ArchivableFolderRow& row) {
    std::size_t chosen = 0;
    while (chosen + 1 < row.paths.size() && row.paths[chosen + 1] != nullptr &&
           !FileManager::fileExists(DeviceRoot::path(row.paths[chosen]))) {
        ++chosen;
    }
    const bool isLast = chosen + 1 == row.paths.size() || row.paths[chosen + 1] == nullptr;
    const bool asFile = row.lastPathIsFolder && isLast && chosen > 0 ? false : row.asFile;
    std::optional<std::string> packageName;
    if (*row.packageName != '\0') packageName = row.packageName;
    return ArchivableFolder::scanned(nameOf(row), packageName, row.type, row.paths[chosen], asFile, row.showContent,
                                     row.showSubFolders);
}

}  // namespace

void ArchivableFolders::resetFolder() {
    Folders folders;
    if (gAutoScanOtherOptionsEnabled && !Supervisor::shared().isStorageAddressbook()) {
        ArchivableFolder::resetDefaultLists();
        for (const ArchivableFolderRow& row : ArchivableFolderTable::rows()) {
            if (meetsCondition(row)) folders.push_back(folderOf(row));
        }
        sortByCompare(folders);
    }
    std::lock_guard lock(gMutex);
    gFolders = std::move(folders);
}

ArchivableFolders::Folders ArchivableFolders::folders() {
    std::lock_guard lock(gMutex);
    return gFolders;
}

std::shared_ptr<ArchivableFolder> ArchivableFolders::folderOfType(std::int32_t type) {
    std::lock_guard lock(gMutex);
    const auto found = std::find_if(gFolders.begin(), gFolders.end(),
                                    [&](const auto& folder) { return folder->folderType() == type; });
    return found == gFolders.end() ? nullptr : *found;
}

bool ArchivableFolders::hasAnythingSelected() {
    std::lock_guard lock(gMutex);
    return std::any_of(gFolders.begin(), gFolders.end(),
                       [](const auto& folder) { return folder->isSelected() || folder->hasSelectedContent(); });
}

}  // namespace stowhaven
