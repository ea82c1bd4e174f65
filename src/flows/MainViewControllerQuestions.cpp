#include "flows/MainViewController.h"

#include "core/CydiaFileManager.h"
#include "core/DataToImport.h"
#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "flows/MainAlerts.h"
#include "flows/MainLabels.h"
#include "items/PhotoVideoManager.h"
#include "platform/Platform.h"
#include "platform/Strings.h"
#include "platform/dispatch/NotificationCenter.h"

namespace stowhaven {

namespace {

constexpr const char* kDefaultBackupTitle = "Backup";
constexpr const char* kStoredKeySetting = "Backup_EncryptionKey";

// A field's text without white space at either end; an empty text is none.
std::optional<std::string> trimmedField(const std::optional<std::string>& text) {
    if (!text) return std::nullopt;
    std::string trimmed = textutil::trimmed(*text);
    if (trimmed.empty()) return std::nullopt;
    return trimmed;
}

bool currentSessionIsEncrypted() {
    const auto session = CydiaFileManager::shared().currentBackupSession();
    return session && session->isEncrypted();
}

void showWarning(const char* messageKey) {
    Supervisor::showAlert(Strings::localized("WARNING"), Strings::localized(messageKey));
}

}  // namespace

void MainViewController::doOperation() {
    if (hasOperationRestrictions()) return;
    const PhotoVideoManager& library = PhotoVideoManager::shared();
    if (gIsBackupMode && (gAutoScanPhotosEnabled || gAutoScanVideosEnabled) && !library.isAllAcccounted() &&
        library.hasDefaultPhotoVideo()) {
        askIgnorePhotoVideoAlbums();
        return;
    }
    if (allScansOff()) {
        displayNothingToDoMessage();
        return;
    }
    if (!gIsBackupMode) {
        if (gConfirmRestore) {
            askToRestore();
        } else if (gPkgFWCompatibilityCheckEnabled) {
            askPackageFWCompatible();
        } else if (currentSessionIsEncrypted()) {
            askEncryptionKey();
        } else {
            doRestore();
        }
        return;
    }
    if (gConfirmBackup) {
        askToBackup();
    } else if (gBackupTitleEnabled) {
        askBackupTitle();
    } else {
        CydiaFileManager& catalogue = CydiaFileManager::shared();
        catalogue.setBackupTitle(kDefaultBackupTitle);
        if (gBackupDescriptionEnabled) {
            askBackupDescription();
            return;
        }
        catalogue.setBackupDescription(gDisplayDateFormatter.stringFromDate(Platform::current().clock().date()));
        doBackup();
    }
}

void MainViewController::askToBackup() { ask(MainAlerts::fixed(MainAlerts::kConfirmBackup)); }
void MainViewController::askToRestore() { ask(MainAlerts::fixed(MainAlerts::kConfirmRestore)); }
void MainViewController::askBackupTitle() { ask(MainAlerts::fixed(MainAlerts::kBackupTitle)); }
void MainViewController::askBackupDescription() { ask(MainAlerts::fixed(MainAlerts::kBackupDescription)); }
void MainViewController::askPackageFWCompatible() { ask(MainAlerts::fixed(MainAlerts::kFirmwareCompatibility)); }
void MainViewController::askIgnorePhotoVideoAlbums() { ask(MainAlerts::fixed(MainAlerts::kIgnoreAlbums)); }
void MainViewController::askEncryptionKey() { ask(MainAlerts::encryptionKey(gIsBackupMode && encryptionKey_)); }

void MainViewController::doCancelOperation() {
    if (working_) ask(MainAlerts::fixed(MainAlerts::kCancelJob));
}

// Any pair of tag and button that is not listed does nothing.
void MainViewController::alertAnswered(int tag, const AlertAnswer& answer) {
    const std::size_t button = answer.buttonIndex;
    switch (tag) {
        case MainAlerts::kNoScansEnabled:
            if (button == 0) Supervisor::shared().dismissActivityIndicatorView();
            if (button == 1) showSettings();
            break;
        case MainAlerts::kLoadError:
            if (button == 1 && !Supervisor::shared().isStorageLocal()) showOtherDeviceBackups();
            break;
        case MainAlerts::kConfirmBackup:
            if (button == 1) continueBackupChain();
            break;
        case MainAlerts::kBackupTitle:
            if (button == 1) takeBackupTitle(answer.fieldText);
            break;
        case MainAlerts::kBackupDescription:
            // "No" takes the text as it stands, "Yes" trimmed.
            if (button == 0) takeBackupDescription(answer.fieldText);
            if (button == 1) takeBackupDescription(trimmedField(answer.fieldText));
            break;
        case MainAlerts::kConfirmRestore:
            if (button == 1) askRestoreQuestionsAfterConfirmation();
            break;
        case MainAlerts::kFirmwareCompatibility:
            if (button == 1) doRestore();
            if (button == 2) restoreOnlyFirmwareCompatiblePackages();
            break;
        case MainAlerts::kIgnoreAlbums:
            if (button == 1) doBackup();
            break;
        case MainAlerts::kUseImportedData:
            if (button == 0) DataToImport::setURL(std::nullopt);
            // The imported session is one to restore.
            if (button == 1 && CydiaFileManager::shared().importData()) configureUIRestoreMode();
            break;
        case MainAlerts::kRestoreDone:
            if (button == 1) Supervisor::shared().reboot();
            if (button == 2) screen_->open({FlowScreen::RestoreLog});
            break;
        case MainAlerts::kOperationCanceled:
            if (button == 0) reloadAll();
            break;
        case MainAlerts::kEncryptionKey:
            if (gIsBackupMode) {
                if (button == 0) {
                    encryptionKey_.reset();
                    CydiaFileManager::shared().setEncryptionKey(std::nullopt);
                    doBackup();
                }
                if (button == 1) takeEncryptionKey(answer.fieldText);
            } else if (button == 1) {
                takeRestoreKey(answer.fieldText);
            }
            break;
        case MainAlerts::kCancelJob:
            if (button == 1) NotificationCenter::defaultCenter().post("PROGRESS_CANCELED");
            break;
        default:
            break;
    }
}

// A confirmed restore goes on without asking for the key, as the answer "yes" to the
// firmware question does: only the unconfirmed road and the answer "no" ask for it.
void MainViewController::askRestoreQuestionsAfterConfirmation() {
    if (gPkgFWCompatibilityCheckEnabled) {
        askPackageFWCompatible();
    } else {
        doRestore();
    }
}

void MainViewController::restoreOnlyFirmwareCompatiblePackages() {
    const std::string& systemVersion = Supervisor::shared().deviceSystemVersion();
    for (const auto& package : CydiaFileManager::shared().oldPackages()) {
        package->setRestoreSelected(package->isFirmwareCompatible(systemVersion));
    }
    if (currentSessionIsEncrypted()) {
        askEncryptionKey();
    } else {
        doRestore();
    }
}

void MainViewController::continueBackupChain() {
    if (gBackupTitleEnabled) {
        askBackupTitle();
    } else {
        takeBackupTitle(std::nullopt);
    }
}

void MainViewController::takeBackupTitle(const std::optional<std::string>& text) {
    CydiaFileManager::shared().setBackupTitle(trimmedField(text).value_or(kDefaultBackupTitle));
    if (gBackupDescriptionEnabled) {
        askBackupDescription();
    } else {
        takeBackupDescription(std::nullopt);
    }
}

void MainViewController::takeBackupDescription(const std::optional<std::string>& text) {
    CydiaFileManager::shared().setBackupDescription(
        text && !text->empty() ? *text : gDisplayDateFormatter.stringFromDate(Platform::current().clock().date()));
    startBackupOrAskKey();
}

void MainViewController::startBackupOrAskKey() {
    if (!gEncryptBackupEnabled) {
        doBackup();
        return;
    }
    if (gUseSameEncryptionKeyEnabled) {
        CydiaFileManager& catalogue = CydiaFileManager::shared();
        catalogue.setEncryptionKey(Supervisor::shared().lowLevelGetStringPreferencesDataForKey(kStoredKeySetting));
        if (catalogue.encryptionKey()) {
            doBackup();
            return;
        }
    }
    askEncryptionKey();
}

// A new key is typed twice; only two equal entries start the backup.
void MainViewController::takeEncryptionKey(const std::optional<std::string>& text) {
    const auto entry = trimmedField(text);
    if (!encryptionKey_) {
        encryptionKey_ = entry;
        askEncryptionKey();
        return;
    }
    if (entry != encryptionKey_) {
        encryptionKey_.reset();
        showWarning("MISMATCH_ENCRYPTION_KEY_MESSAGE");
        return;
    }
    encryptionKey_.reset();
    CydiaFileManager::shared().setEncryptionKey(entry);
    Supervisor::shared().lowLevelStorePreferencesData(
        gUseSameEncryptionKeyEnabled && entry ? PlistValue(*entry) : PlistValue(), kStoredKeySetting);
    doBackup();
}

void MainViewController::takeRestoreKey(const std::optional<std::string>& text) {
    const auto session = CydiaFileManager::shared().currentBackupSession();
    const auto key = trimmedField(text);
    if (session && key && session->isValidEncryptionKey(*key)) {
        doRestore();
    } else {
        showWarning("INVALID_ENCRYPTION_KEY_MESSAGE");
    }
}

}  // namespace stowhaven
