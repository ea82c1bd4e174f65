#include "restore/RestoreSelection.h"

#include "core/BackupSession.h"
#include "core/Supervisor.h"
#include "items/Application.h"
#include "items/ArchivableFolder.h"

namespace stowhaven {

namespace {

constexpr const char* kApplicationsDefault = "DefaultApps_Restore";
constexpr const char* kFoldersDefault = "Restore_ArchivableFolders";

}  // namespace

void selectRestoreDefaults(BackupSession& session) {
    const Supervisor& supervisor = Supervisor::shared();
    if (session.applications()) {
        const bool chosenBefore = supervisor.lowLevelKeyExists(kApplicationsDefault);
        for (const auto& application : *session.applications()) {
            if (!application->isInstalled()) {
                application->deselect();
            } else if (chosenBefore) {
                application->selectIfRestoreDefault();
            } else {
                application->select();
            }
        }
    }
    if (session.archivableFolders()) {
        const bool chosenBefore = supervisor.lowLevelKeyExists(kFoldersDefault);
        for (const auto& folder : *session.archivableFolders()) {
            folder->setSelected(true);
            for (const auto& item : folder->contentItems()) item->setSelected(true);
            // A saved choice of a place's items, or of the types of places, narrows it.
            const bool itemsChosen = folder->canSelectContent() && !folder->isFile();
            if (itemsChosen || chosenBefore) folder->processDefaultsForBackup(false);
        }
    }
}

}  // namespace stowhaven
