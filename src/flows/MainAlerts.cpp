#include "flows/MainAlerts.h"

#include "platform/Strings.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <initializer_list>

namespace stowhaven {

namespace {

struct FixedAlert {
    MainAlerts::Tag tag;
    const char* titleKey;
    const char* messageKey;
    std::initializer_list<const char*> buttonKeys;
    Alert::Field field = Alert::Field::None;
};

const std::array<FixedAlert, 11> kFixedAlerts = {{
    {MainAlerts::kNoScansEnabled, "WARNING", "NO_SCANS_ENABLED_MESSAGE", {"NO_BUTTON", "YES_BUTTON"}},
    {MainAlerts::kNoBackupCreated, "WARNING", "NO_BACKUP_CREATED", {"OK_BUTTON"}},
    {MainAlerts::kConfirmBackup,
     "BACKUP_CONFIRMATION_TITLE",
     "BACKUP_CONFIRMATION_MESSAGE",
     {"NO_BUTTON", "YES_BUTTON"}},
    {MainAlerts::kConfirmRestore,
     "RESTORE_CONFIRMATION_TITLE",
     "RESTORE_CONFIRMATION_MESSAGE",
     {"NO_BUTTON", "YES_BUTTON"}},
    {MainAlerts::kIgnoreAlbums, "IGNORE_ALBUMS_TITLE", "IGNORE_ALBUMS_MESSAGE", {"NO_BUTTON", "YES_BUTTON"}},
    {MainAlerts::kUseImportedData, "USE_IMPORTED_DATA_TITLE", "USE_IMPORTED_DATA_MESSAGE", {"NO_BUTTON", "YES_BUTTON"}},
    {MainAlerts::kBackupTitle,
     "BACKUP_TITLE",
     "BACKUP_TITLE_MESSAGE",
     {"CANCEL_BUTTON", "OK_BUTTON"},
     Alert::Field::Text},
    {MainAlerts::kBackupDescription,
     "BACKUP_DESCRIPTION",
     "BACKUP_DESCRIPTION_MESSAGE",
     {"NO_BUTTON", "YES_BUTTON"},
     Alert::Field::Text},
    {MainAlerts::kOperationCanceled, "OPERATION_CANCELED_TITLE", "OPERATION_CANCELED_MESSAGE", {"OK_BUTTON"}},
    {MainAlerts::kFirmwareCompatibility,
     "RESTORE_PKG_FW_COMPATIBLE",
     "RESTORE_PKG_FW_COMPATIBLE_MESSAGE",
     {"CANCEL_BUTTON", "YES_BUTTON", "NO_BUTTON"}},
    {MainAlerts::kCancelJob, "PROGRESS_CANCEL_TITLE", "PROGRESS_CANCEL_MESSAGE", {"NO_BUTTON", "YES_BUTTON"}},
}};

std::vector<std::string> localized(std::initializer_list<const char*> keys) {
    std::vector<std::string> texts;
    for (const char* key : keys) texts.push_back(Strings::localized(key));
    return texts;
}

// "Your backup is stored on Dropbox!" and its like.
std::string withEngine(const char* key, const std::string& engineName) {
    return fmt::format("{} {}!", Strings::localized(key), engineName);
}

}  // namespace

Alert MainAlerts::fixed(Tag tag) {
    const auto found = std::find_if(kFixedAlerts.begin(), kFixedAlerts.end(),
                                    [tag](const FixedAlert& alert) { return alert.tag == tag; });
    if (found == kFixedAlerts.end()) return {.tag = tag};
    return {tag, Strings::localized(found->titleKey), Strings::localized(found->messageKey),
            localized(found->buttonKeys), found->field};
}

Alert MainAlerts::loadError(const std::string& errorMsg, bool offerOtherDevices) {
    if (!offerOtherDevices) return {kLoadError, Strings::localized("WARNING"), errorMsg, localized({"OK_BUTTON"})};
    return {kLoadError, Strings::localized("WARNING"),
            errorMsg + " " + Strings::localized("USE_OTHER_DEVICE_BACKUP_MESSAGE"),
            localized({"NO_BUTTON", "YES_BUTTON"})};
}

Alert MainAlerts::restoreDone(bool withLog) {
    auto buttons = withLog ? localized({"DISMISS_BUTTON", "REBOOT_BUTTON", "VIEW_LOG_BUTTON"})
                           : localized({"DISMISS_BUTTON", "REBOOT_BUTTON"});
    return {kRestoreDone, Strings::localized("RESTORE_DONE_TITLE"), Strings::localized("RESTORE_DONE_MESSAGE"),
            std::move(buttons)};
}

Alert MainAlerts::backupDone(bool inAddressBook, const std::string& engineName) {
    const std::string message =
        inAddressBook ? Strings::localized("REMEMBER_TO_SYNC") : withEngine("BACKUP_ON_CLOUD", engineName);
    return {kBackupDone, Strings::localized("BACKUP_DONE_TITLE"), message, localized({"OK_BUTTON"})};
}

Alert MainAlerts::backupFailed(const std::string& errorMsg, bool inAddressBook, const std::string& engineName) {
    const std::string reason =
        inAddressBook ? Strings::localized("ADDRESSBOOK_BACKUP_FAILED") : withEngine("CLOUD_BACKUP_FAILED", engineName);
    const bool needsBreak = !errorMsg.empty() && errorMsg.back() != '\n';
    return {kBackupFailed, Strings::localized("BACKUP_FAILED"), errorMsg + (needsBreak ? "\n" : "") + reason,
            localized({"OK_BUTTON"})};
}

Alert MainAlerts::encryptionKey(bool confirming) {
    return {kEncryptionKey, Strings::localized("ENCRYPTION_KEY_TITLE"),
            Strings::localized(confirming ? "ENCRYPTION_KEY_CONFIRM_MESSAGE" : "ENCRYPTION_KEY_MESSAGE"),
            localized({"CANCEL_BUTTON", "OK_BUTTON"}), Alert::Field::Secure};
}

}  // namespace stowhaven
