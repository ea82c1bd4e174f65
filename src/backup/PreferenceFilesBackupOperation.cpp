#include "backup/PreferenceFilesBackupOperation.h"

#include "backup/BackupCommands.h"
#include "core/BackupSession.h"
#include "core/CydiaFileManager.h"
#include "core/Supervisor.h"
#include "items/DeviceItems.h"
#include "platform/Log.h"
#include "platform/Strings.h"

#include <fmt/format.h>

#include <algorithm>

namespace stowhaven {

namespace {

// Adds each chosen file of the list to the archive, with the progress by position; the
// package manager's settings file, which the archive starts with, is passed over.
void addChosenFiles(const std::string& archive, const CydiaFileManager::PreferenceFiles& files) {
    Supervisor& supervisor = Supervisor::shared();
    for (std::size_t position = 0; position < files.size(); ++position) {
        const auto& file = files[position];
        supervisor.notifyProgress(static_cast<double>(position) / static_cast<double>(files.size() + 1), std::nullopt);
        if (file->name() == DeviceItems::kCydiaPreferencesPath) {
            supervisor.notifyProgress(
                std::nullopt, fmt::format("{}: {}...", Strings::localized("SKIPPING_MESSAGE"), file->displayName()));
        } else if (file->isSelected()) {
            supervisor.notifyProgress(
                std::nullopt, fmt::format("{}: {}...", Strings::localized("ZIPPING_MESSAGE"), file->displayName()));
            supervisor.systemExecute(BackupCommands::updateArchive(archive, {file->name()}));
        }
    }
}

}  // namespace

void PreferencesFileBackupOperation::main() {
    setDirectoryName("PREFERENCES");
    setZipDir("/var/mobile/Library/Preferences");
    setOperationResult(0);
    if (backupSession() && backupSession()->hasPrefsFilesData()) DataBackupOperation::main();
}

bool PreferencesFileBackupOperation::zipDataWithCompression(bool compressed) {
    if (stopsForCancel()) return false;
    SH_LOG("\tZipping data for <{}>...", zipDir());
    Supervisor& supervisor = Supervisor::shared();
    supervisor.systemExecute(
        BackupCommands::createArchiveStartingWith(archivePath(), compressed, DeviceItems::kCydiaPreferencesPath));
    supervisor.notifyProgress(std::nullopt, std::nullopt);
    addChosenFiles(archivePath(), CydiaFileManager::shared().currentPreferencesFiles());
    return finishArchive();
}

void SpringboardFileBackupOperation::main() {
    setDirectoryName("SPRINGBOARD");
    setZipDir("/var/mobile/Library/SpringBoard");
    setOperationResult(0);
    if (backupSession() && backupSession()->hasSpringboardFilesData()) DataBackupOperation::main();
}

bool SpringboardFileBackupOperation::zipDataWithCompression(bool compressed) {
    if (stopsForCancel()) return false;
    SH_LOG("\tZipping data for <{}>...", zipDir());
    Supervisor& supervisor = Supervisor::shared();
    const auto files = CydiaFileManager::shared().currentSpringBoardData();
    const auto first = std::find_if(files.begin(), files.end(), [](const auto& file) { return file->isSelected(); });
    if (first == files.end()) {
        SH_LOG("Nothing to do!");
        return true;
    }
    supervisor.notifyProgress(std::nullopt,
                              fmt::format("{}: {}...", Strings::localized("ZIPPING_MESSAGE"), (*first)->displayName()));
    // No archive file comes of this line: the first update below makes it.
    supervisor.systemExecute(BackupCommands::createWithoutArchiveFile(compressed, (*first)->name()));
    supervisor.notifyProgress(std::nullopt, std::nullopt);
    addChosenFiles(archivePath(), files);
    return finishArchive();
}

}  // namespace stowhaven
