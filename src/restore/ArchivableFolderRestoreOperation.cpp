#include "restore/ArchivableFolderRestoreOperation.h"

#include "core/BackupSession.h"
#include "core/CydiaFileManager.h"
#include "core/Supervisor.h"
#include "items/ArchivableFolder.h"
#include "items/ArchivableFolderTable.h"
#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Strings.h"
#include "restore/RestoreCommands.h"
#include "restore/RestoreReport.h"
#include "restore/StorageFetch.h"

#include <algorithm>
#include <functional>

namespace stowhaven {

namespace {

// The places a folder's archive may write to: the folder and the files of its tweak that
// the backup adds.
std::vector<std::string> placesOf(const ArchivableFolder& folder) {
    std::vector<std::string> places = {folder.dataFolderPath()};
    switch (folder.folderType()) {
        case ArchivableFolder::kSBSettingsType:
            places.emplace_back(ArchivableFolder::kSBSettingsNote);
            break;
        case ArchivableFolder::kITunesRingtonesType:
            places.emplace_back(ArchivableFolder::kITunesRingtonesList);
            break;
        default:
            break;
    }
    return places;
}

}  // namespace

void ArchivableFolderRestoreOperation::main() {
    DataRestoreOperation::main();
    setName("ArchivableFolderRestoreOperation");
    if (!backupSession() || !engine() || !sessionDate() || !backupSession()->archivableFolders()) return;
    const auto& folders = *backupSession()->archivableFolders();
    SH_LOG("# archivable folders: {}", folders.size());
    if (std::none_of(folders.begin(), folders.end(), [](const auto& folder) { return folder->isSelected(); })) return;
    for (const auto& folder : folders) {
        if (Supervisor::shared().isCanceled()) return;
        if (!folder->isSelected()) {
            SH_LOG("Skipping <{}>...", folder->name());
            continue;
        }
        restoreArchivableFolder(*folder);
    }
}

void ArchivableFolderRestoreOperation::restoreArchivableFolder(const ArchivableFolder& folder) {
    // Where a folder lands and whose its files become is the device's to say: a session
    // names its place only to be checked against the places of its type.
    if (!ArchivableFolderTable::isPlaceOf(folder.folderType(), folder.dataFolderPath())) {
        SH_LOG("Refusing <{}>: the session places it at <{}>, which is no place of its kind on this device",
               folder.name(), folder.dataFolderPath());
        return;
    }
    SH_LOG("Restoring <{}>...", folder.name());
    Supervisor& supervisor = Supervisor::shared();
    supervisor.notifyProgress(std::nullopt, Strings::format("RESTORING_MESSAGE", folder.name()));
    if (const auto path = fetchSessionFile(*engine(), folder.archiveName() + ".tbz", *sessionDate(), std::nullopt)) {
        extractCompressedArchive(*path, folder);
    }
    supervisor.systemExecute(RestoreCommands::giveToMobile({folder.dataFolderPath()}));
}

void ArchivableFolderRestoreOperation::extractCompressedArchive(const std::string& archive,
                                                                const ArchivableFolder& folder) {
    // Tried on every archive: on a plain one the command fails and leaves it as it was.
    CydiaFileManager::decryptFileAtPath(archive);
    const std::string inner = temporaryPath(folder.archiveName() + ".tar");
    std::vector<std::string> outerPlaces = placesOf(folder);
    outerPlaces.push_back(DeviceRoot::devicePathOf(inner));
    if (!extractMembers(archive, {outerPlaces})) {
        RestoreReport::shared().add(folder.name(), RestoreReport::kUntrustedArchive);
        return;
    }
    if (!FileManager::isRegularFile(inner)) return;

    std::function<bool(const std::string&)> chosen;
    if (folder.canSelectContent()) {
        // Each chosen item with what lies below it.
        std::vector<std::string> items;
        for (const auto& item : folder.contentItems()) {
            if (item->isSelected()) items.push_back((folder.dataFolderPath() + "/" + item->name()).substr(1));
        }
        chosen = [items = std::move(items)](const std::string& member) {
            return std::any_of(items.begin(), items.end(), [&member](const std::string& item) {
                return member == item || member.starts_with(item + "/");
            });
        };
    }
    if (!extractMembers(inner, {placesOf(folder)}, chosen)) {
        RestoreReport::shared().add(folder.name(), RestoreReport::kUntrustedArchive);
    }
    FileManager::removeItem(inner);
}

}  // namespace stowhaven
