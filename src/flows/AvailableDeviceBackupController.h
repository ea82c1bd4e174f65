#pragma once

#include "flows/HistoryScreen.h"
#include "flows/HistoryWork.h"
#include "storage/StorageHelperProtocol.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// The backups of every device on the current storage: the dates of the chosen one, its
// rename and deletion, and its take-over by this device. A device backup is named by its
// device folder on a file engine, by its record's first name on the address book. Made with
// create(); used on the main queue. Engine calls run on a background queue and answer on
// the main queue; isWaiting() tells when one is under way.
class AvailableDeviceBackupController : public std::enable_shared_from_this<AvailableDeviceBackupController> {
public:
    enum Tag : int {
        kNoDeviceBackup = 2101,
        kRename = 2102,
        kDuplicateName = 2103,
        kDeleteDeviceBackup = 2104,
        kOperationUnavailable = 2105,
        kDeviceBackupAlreadyExists = 2106,
        kUseDeviceBackup = 2107,
    };

    static std::shared_ptr<AvailableDeviceBackupController> create(std::shared_ptr<HistoryScreen> screen);

    // Lists the device backups, and chooses this device's, or else the first.
    void viewDidAppear();
    // False, with nothing changed, for a name that is no entry of the list.
    bool selectDeviceBackup(const std::string& name);
    // Asks for the new name, then rename().
    void askToRename();
    void rename(const std::string& newName);
    // Asks first; on yes deleteSelectedDeviceBackup().
    void askToDelete();
    void deleteSelectedDeviceBackup();
    // Asks first; on yes useSelectedDeviceBackup().
    void askToUseSelectedDeviceBackup();
    // This device takes the chosen backup over: a copy under its own name.
    void useSelectedDeviceBackup();
    // The engine can't take another device's backup over: the user is told so, for any
    // name but this device's own.
    bool refusesTakeOverOf(const std::string& name);
    void viewWillDisappear();

    const std::vector<std::string>& deviceBackups() const { return deviceBackups_; }
    const std::string& selectedDeviceBackup() const { return selectedDeviceBackup_; }
    // Newest first, as the view shows them.
    const std::vector<std::string>& backupDates() const { return backupDates_; }
    bool isWaiting() const { return waiting_.any(); }
    bool isClosed() const { return closed_; }
    // The take-over went ahead: this device's backups are new.
    bool hasTakenOver() const { return hasTakenOver_; }
    // The error of the last request that failed; none while all went well.
    const std::optional<std::string>& lastError() const { return lastError_; }
    // The name of this device's backup on the current storage.
    static std::string thisDeviceBackupName();

private:
    explicit AvailableDeviceBackupController(std::shared_ptr<HistoryScreen> screen) : screen_(std::move(screen)) {}

    void handleAvailableDeviceBackupsSucceeded();
    void handleAvailableDeviceBackupsFailed();
    void reloadAvailableDeviceBackups();
    void loadDetailBackupForDeviceId(const std::string& name);
    void handleDetailLoaded(const HookObject& object);
    void showSelection();
    void copyAddressBookRecord();
    bool isThisDevice(const std::string& name) const;
    bool isSelectionThisDevice() const { return isThisDevice(selectedDeviceBackup_); }
    // Runs CALL on the engine with the hooks of the list: a success reads the list again.
    void callWithListHooks(const std::string& indicator, std::function<void(StorageHelperProtocol&)> call);

    std::shared_ptr<HistoryScreen> screen_;
    std::vector<std::string> deviceBackups_;
    std::string selectedDeviceBackup_;
    std::vector<std::string> backupDates_;
    bool fNeedReload_ = false;
    bool fCurrentDeviceHasBackupSessions_ = false;
    bool closed_ = false;
    bool hasTakenOver_ = false;
    std::optional<std::string> lastError_;
    history::Waiting waiting_;
};

}  // namespace stowhaven
