#include "backup/ArchivableFolderBackupOperation.h"

#include "backup/BackupCommands.h"
#include "core/BackupSession.h"
#include "core/FileSizes.h"
#include "core/Supervisor.h"
#include "items/ArchivableFolder.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Strings.h"
#include "storage/StorageHelperProtocol.h"

#include <fmt/format.h>

#include <algorithm>

namespace stowhaven {

namespace {

constexpr const char* kKeyboardShortcuts = "/var/mobile/Library/Keyboard/dynamic-text.dat";
constexpr const char* kCopicDatabase = "/var/mobile/Library/Copic/Copic.db";
constexpr const char* kCopicMail = "/var/mobile/Library/Mail/Copic/";

std::string itemPath(const ArchivableFolder& folder, const std::string& itemName) {
    return folder.dataFolderPath() + "/" + itemName;
}

}  // namespace

void ArchivableFolderBackupOperation::main() {
    const auto& session = backupSession();
    if (session && session->archivableFolders() && !session->archivableFolders()->empty() &&
        session->hasAnyArchivableFolderSelected()) {
        DataBackupOperation::main();
    }
}

void ArchivableFolderBackupOperation::uploadDataToCloud() {
    Supervisor& supervisor = Supervisor::shared();
    for (const auto& folder : *backupSession()->archivableFolders()) {
        if (stopsForCancel()) return;
        supervisor.logMemoryUsage();
        supervisor.notifyProgress(std::nullopt,
                                  fmt::format("{}: {}...", Strings::localized("ARCHIVING_DATA"), folder->name()));
        std::string path;
        if (folder->canSelectContent()) {
            const auto archive = zipSelectedContent(*folder);
            if (!archive) continue;
            path = *archive;
        } else {
            path = temporaryPath(folder->archiveName() + ".tbz");
            if (!zipArchivableFolder(*folder, path)) continue;
        }
        supervisor.notifyProgress(0.0,
                                  fmt::format("{}: {}", folder->name(), Strings::localized("UPLOADING_ARCHIVED_DATA")));
        const std::uint64_t size = FileManager::sizeOfItem(path);
        if (size == 0) {
            setOperationResult(0);
            SH_LOG("<{}> is empty!", path);
            return;
        }
        SH_LOG("\tUploading data <[{:.3f}Mb]> for <{}>...", static_cast<double>(size) / FileSizes::kBytesPerMegabyte,
               folder->displayName());
        if (stopsForCancel()) return;
        engine()->uploadFile(path, *sessionDate(), std::nullopt);
    }
}

std::optional<std::string> ArchivableFolderBackupOperation::zipSelectedContent(const ArchivableFolder& folder) {
    Supervisor& supervisor = Supervisor::shared();
    const auto& items = folder.contentItems();
    if (std::none_of(items.begin(), items.end(), [](const auto& item) { return item->isSelected(); })) {
        SH_LOG("Skipping {}", folder.name());
        return std::nullopt;
    }
    SH_LOG("\tZipping data for <{}> {{{:.3f}Mb}}...", folder.name(), folder.selectedItemsSize());
    const std::string inner = temporaryPath(folder.archiveName() + ".tar");
    supervisor.deleteFileAtPath(inner);
    for (const auto& item : items) {
        if (item->isSelected())
            supervisor.systemExecute(BackupCommands::updateArchive(inner, {itemPath(folder, item->name())}));
    }
    if (folder.folderType() == ArchivableFolder::kITunesRingtonesType) {
        supervisor.systemExecute(BackupCommands::updateArchive(inner, {ArchivableFolder::kITunesRingtonesList}));
    }
    const std::string archive = temporaryPath(folder.archiveName() + ".tbz");
    supervisor.deleteFileAtPath(archive);
    supervisor.systemExecute(BackupCommands::nestedArchive(inner, archive));
    if (!sealArchive(folder.name(), archive)) return std::nullopt;
    return archive;
}

bool ArchivableFolderBackupOperation::zipArchivableFolder(const ArchivableFolder& folder, const std::string& target) {
    if (stopsForCancel()) return false;
    Supervisor& supervisor = Supervisor::shared();
    supervisor.notifyProgress(std::nullopt,
                              fmt::format("{}: {}...", folder.name(), Strings::localized("ARCHIVING_DATA")));
    SH_LOG("\tZipping data for <{}> {{{:.3f}Mb}}...", folder.name(), folder.selectedItemsSize());
    const bool withNote = folder.folderType() == ArchivableFolder::kSBSettingsType;
    supervisor.systemExecute(BackupCommands::folderArchive(target, folder.dataFolderPath(),
                                                           withNote ? ArchivableFolder::kSBSettingsNote : ""));
    // These two update a compressed archive, which tar refuses: the archive stays as it is.
    if (folder.folderType() == ArchivableFolder::kKeyboardShortcutsType) {
        supervisor.systemExecute(BackupCommands::updateArchive(target, {kKeyboardShortcuts}));
    } else if (folder.folderType() == ArchivableFolder::kCopicType) {
        supervisor.systemExecute(BackupCommands::updateArchive(target, {kCopicDatabase, kCopicMail}));
    }
    if (!FileManager::isRegularFile(target)) {
        fail("tar", "archive", folder.name());
        return false;
    }
    return sealArchive(folder.name(), target);
}

}  // namespace stowhaven
