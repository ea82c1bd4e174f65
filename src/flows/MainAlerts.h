#pragma once

#include "core/AlertPresenter.h"

#include <string>

namespace stowhaven {

// The main flow's alerts: each question or report has a fixed tag, by which its answer is
// looked up, and its texts and buttons in a fixed order.
class MainAlerts {
public:
    enum Tag : int {
        kNoScansEnabled = 1000,
        kNoBackupCreated = 1002,
        kLoadError = 1003,
        kConfirmBackup = 1004,
        kConfirmRestore = 1005,
        kIgnoreAlbums = 1006,
        kUseImportedData = 1007,
        kBackupTitle = 1008,
        kBackupDescription = 1009,
        kRestoreDone = 1010,
        kBackupDone = 1011,
        kBackupFailed = 1012,
        kOperationCanceled = 1013,
        kEncryptionKey = 1014,
        kFirmwareCompatibility = 1015,
        kCancelJob = 1018,
    };

    // An alert whose texts never change; the others have their own makers below.
    static Alert fixed(Tag tag);
    // With more than one device's backups on the storage, it offers to use another's.
    static Alert loadError(const std::string& errorMsg, bool offerOtherDevices);
    // The log button only when a restored package list was chosen.
    static Alert restoreDone(bool withLog);
    static Alert backupDone(bool inAddressBook, const std::string& engineName);
    static Alert backupFailed(const std::string& errorMsg, bool inAddressBook, const std::string& engineName);
    // The second asking is for the confirmation of a new key.
    static Alert encryptionKey(bool confirming);
};

}  // namespace stowhaven
