#include "restore/ArchivableFolderRestoreOperation.h"

#include "core/BackupSession.h"
#include "core/CydiaFileManager.h"
#include "core/Supervisor.h"
#include "items/ArchivableFolder.h"
#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Strings.h"
#include "restore/ArchiveMembers.h"
#include "restore/RestoreCommands.h"
#include "restore/StorageFetch.h"

#include <algorithm>

namespace stowhaven {

namespace {

constexpr const char* kFilesToExtract = "filesToExtract.txt";

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
    extractOwnedMembers(archive, "/", outerPlaces);
    if (!FileManager::isRegularFile(inner)) return;

    const auto members = ArchiveMembers::of(inner, placesOf(folder));
    if (members && folder.canSelectContent()) {
        // Each chosen item with what lies below it, of the members that may be written.
        std::string list;
        for (const auto& item : folder.contentItems()) {
            if (!item->isSelected()) continue;
            const std::string itemMember = (folder.dataFolderPath() + "/" + item->name()).substr(1);
            for (const std::string& member : members->allowed()) {
                if (member == itemMember || member.starts_with(itemMember + "/")) list += member + "\n";
            }
        }
        const std::string listPath = temporaryPath(kFilesToExtract);
        if (FileManager::writeFile(listPath, list)) {
            Supervisor::shared().systemExecute(RestoreCommands::extract(inner, "/", listPath));
        } else {
            SH_LOG("Couldn't write <{}> to <{}>", list, listPath);
        }
        FileManager::removeItem(listPath);
    } else if (members) {
        extractOwnedMembers(inner, "/", placesOf(folder));
    }
    FileManager::removeItem(inner);
}

}  // namespace stowhaven
