#include "flows/MainViewController.h"

#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "flows/MainAlerts.h"
#include "flows/MainLabels.h"
#include "flows/SelectionScreens.h"
#include "platform/Strings.h"

namespace stowhaven {

void MainViewController::configureUIBackupMode() {
    gIsBackupMode = true;
    backupModeShown_ = true;
    screen_->showMode(true);
    updateLabels();
}

// Without a session there is nothing to restore, and the screen stays as it is.
void MainViewController::configureUIRestoreMode() {
    if (CydiaFileManager::shared().backupSessions().empty()) {
        gIsBackupMode = false;
        displayNothingToDoMessage();
        gIsBackupMode = true;
        return;
    }
    gIsBackupMode = false;
    backupModeShown_ = false;
    screen_->showMode(false);
    updateLabels();
}

void MainViewController::storageButtonClicked() {
    if (gIsBackupMode) {
        configureUIBackupMode();
        return;
    }
    std::vector<std::string> options = {Strings::localized("BACKUP_HISTORY")};
    const bool offerOtherDevices = !Supervisor::shared().isStorageLocal();
    if (offerOtherDevices) options.push_back(Strings::localized("OTHER_DEVICE_BACKUP"));
    screen_->chooseFrom(options, [weak = weak_from_this()](std::optional<std::size_t> index) {
        const auto self = weak.lock();
        if (!self || !index) return;
        if (*index == 0) self->showDeviceBackup();
        if (*index == 1) self->showOtherDeviceBackups();
    });
}

void MainViewController::showDeviceBackup() {
    if (CydiaFileManager::shared().backupSessions().empty()) {
        ask(MainAlerts::fixed(MainAlerts::kNoBackupCreated));
        return;
    }
    screen_->open({FlowScreen::DeviceBackups});
}

void MainViewController::showOtherDeviceBackups() { screen_->open({FlowScreen::OtherDeviceBackups}); }

void MainViewController::showSettings() { screen_->open({FlowScreen::Settings}); }

void MainViewController::showBackupDataConfiguration() { showConfiguration(true); }

void MainViewController::showRestoreDataConfiguration() { showConfiguration(false); }

void MainViewController::showConfiguration(bool backupMode) {
    const auto screens = selectionScreens(backupMode);
    if (screens.empty()) {
        displayNothingToDoMessage();
    } else {
        screen_->open(screens);
    }
}

void MainViewController::updateLabels() { screen_->showLabels(composeMainLabels(gIsBackupMode)); }

// The size is one of the labels: they are composed together.
void MainViewController::updateBackupSizeLabel() { updateLabels(); }

void MainViewController::updateStorageIcon() { screen_->showStorage(Supervisor::shared().storageEngineName()); }

void MainViewController::displayNothingToDoMessage() {
    Supervisor::showAlert(
        Strings::localized("WARNING"),
        Strings::localized(gIsBackupMode ? "NOTHING_TO_BACKUP_MESSAGE" : "NOTHING_TO_RESTORE_MESSAGE"));
}

}  // namespace stowhaven
