#pragma once

#include "core/AlertPresenter.h"
#include "core/DataSetSizes.h"
#include "items/Application.h"
#include "platform/DateFormatter.h"
#include "platform/dispatch/NotificationCenter.h"
#include "platform/plist/PlistValue.h"
#include "platform/services/MailComposer.h"
#include "storage/StorageHelperProtocol.h"
#include "storage/StorageType.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

// The formatter of session stamps: "yyyy-MM-dd_HH~mm~ss" in the device's time zone. Stamps
// name the history files and session folders on every storage.
extern const DateFormatter gDateFormatter;

// The largest data set of a job, which the free-space tests weigh.
struct DataSet {
    std::string name;
    double size = 0;  // megabytes
};

// One step of progress: the fraction done and the text, either of which may be absent.
struct ProgressUpdate {
    std::optional<double> progress;
    std::optional<std::string> displayText;
};

// What the calendar entry of a finished job is made of. Without a packages text no entry is
// made; an empty title or description is one the last session doesn't have.
struct JobSummary {
    std::string packagesText;
    std::string twitterFeedData;
    std::string lastSessionTitle;
    std::string lastSessionDescription;
};

struct Email {
    std::string emailBody;
    std::string subject;
    std::vector<std::string> toRecipients;
    std::vector<MailAttachment> fileAttachments;
    // The body is HTML; the device's details then go below it as preformatted text.
    bool isHTML = false;
};

// The services that every part of the system leans on: device commands, cancellation,
// temporary files, the free-space tests, the settings store, the choice of storage engine,
// progress and alerts, the end-of-job signals, and the facts of the device. One instance
// lives as long as the process.
class Supervisor {
public:
    // Made on first use, once, whichever thread comes first.
    static Supervisor& shared();
    // Drops the instance, so that the next shared() makes a fresh one for the current
    // device root and services. For tests only: nothing may be using the instance, and no
    // block of its may still wait on the main queue.
    static void resetForTesting();

    ~Supervisor();
    Supervisor(const Supervisor&) = delete;
    Supervisor& operator=(const Supervisor&) = delete;

    // Device commands. Blocks the calling thread; output and exit status are thrown away.
    // Once the job is canceled its steps start no more tools: a command is then logged and
    // left, and the step finds nothing it was to leave behind.
    void systemExecute(const std::string& command);
    void reboot();
    void respring();

    // Cancellation: true from "PROGRESS_CANCELED" until resetCancelStatus().
    bool isCanceled() const { return fCanceled_; }
    void resetCancelStatus() { fCanceled_ = false; }
    void handleProgressCanceled();

    // Temporary files.
    std::string getTemporaryFileName(bool secure) const;
    void removeTemporaryFiles();
    void removeTemporaryFolders();
    // True when nothing is left to do, a folder included, which stays.
    bool deleteFileAtPath(const std::string& path);

    // Free space, in megabytes.
    double freeSpace() const { return freeSpace_; }
    void setFreeSpace(double freeSpace) { freeSpace_ = freeSpace; }
    // Measures the temporary folder's file system, only while the free space is 0.
    void refreshFreeSpace();
    std::shared_ptr<Application> largestApplication() const;
    void setLargestApplication(std::shared_ptr<Application> application);
    // Where the data sets' sizes come from: the device's in backup direction, the current
    // session's in restore direction. A provider may answer nothing.
    using DataSetSizesProvider = std::function<std::shared_ptr<const DataSetSizes>()>;
    void setDeviceDataSets(DataSetSizesProvider provider);
    void setSessionDataSets(DataSetSizesProvider provider);
    DataSet findLargestDataSet() const;
    bool hasSystemFreeSpaceAvailability() const;
    bool hasCloudFreeSpaceAvailability() const;
    // The gate before a job; shows its own alert when it answers false.
    bool hasValidFreeSpace();
    void displayNotEnoughRoomMessage();
    void displayNotEnoughRoomOnCloudMessage();
    // A size (megabytes) equal to the limit does not fit.
    bool isFileWithinUploadLimit(double size, bool displayAlert, const std::optional<std::string>& name);

    // The settings store, read directly rather than through the process-wide flags.
    std::optional<std::string> lowLevelGetStringPreferencesDataForKey(std::string_view key) const;
    std::optional<PlistValue::Data> lowLevelGetDataPreferencesDataForKey(std::string_view key) const;
    std::optional<PlistValue> lowLevelGetNumberPreferencesDataForKey(std::string_view key) const;
    bool lowLevelGetBooleanPreferencesDataForKey(std::string_view key) const;
    std::optional<Date> lowLevelGetDatePreferencesDataForKey(std::string_view key) const;
    std::optional<PlistValue::Array> lowLevelGetArrayPreferencesDataForKey(std::string_view key) const;
    std::optional<PlistValue::Dictionary> lowLevelGetDictionaryPreferencesDataForKey(std::string_view key) const;
    bool lowLevelKeyExists(std::string_view key) const;
    // Stores and writes at once; a null value removes the key. An empty key, which stands
    // for none, stores nothing.
    void lowLevelStorePreferencesData(PlistValue value, std::string_view key);

    // The storage engine. Changing the live type does not persist it.
    StorageType currentStorageType() const { return currentStorageType_; }
    void setCurrentStorageType(StorageType type) { currentStorageType_ = type; }
    // The engine of the live type, an unknown type falling to local storage; nothing until
    // that engine has been made.
    std::shared_ptr<StorageHelperProtocol> currentStorageEngine() const;
    // An unknown type is named "Addressbook".
    std::string storageEngineName() const;
    bool isStorageAddressbook() const;
    bool isStorageDropbox() const;
    bool isStorageSugarSync() const;
    bool isStorageSkyDrive() const;
    bool isStorageBox() const;
    bool isStorageLocal() const;
    bool isStorageFTP() const;
    bool isStorageGDrive() const;
    bool isStorageOwnCloud() const;
    void setStorageToAddressbook();
    void setStorageToDropbox();
    void setStorageToSugarSync();
    void setStorageToSkyDrive();
    void setStorageToBox();
    void setStorageToLocal();
    void setStorageToFTP();
    void setStorageToGDrive();
    void setStorageToOwnCloud();
    // The type as the running value, with its log line.
    void setStorageTo(StorageType type);
    // Every engine but the address book, local storage included.
    bool isCloudStorage() const;
    // An engine that works over the network: every one but the address book and local storage.
    bool isNetworkStorage() const;
    bool isStorageSameAsDefault() const;
    void persistStorageType();
    void cloudStorageFlushCache();
    // Of the engine of the live type; 0 keeps all.
    std::int32_t maximumBackupsToKeep() const;
    void setMaximumBackupToKeep(std::int32_t count);
    // Stores the count of the live type under that engine's key.
    void persistMaximumBackupsToKeep();

    // Progress, delivered on the main queue as "UPDATE_PROGRESS_TEXT" (object: the text as
    // a std::string) and "UPDATE_PROGRESS" (object: the fraction as a double); an absent
    // value leaves the object empty.
    void notifyProgress(std::optional<double> progress, std::optional<std::string> message);
    void incrementBar(const ProgressUpdate& update);
    std::optional<std::string> progressMessage() const;
    void showProgressViewWithMessage(const std::string& message);
    void showActivityIndicatorViewWithMessage(const std::string& message, bool withCancel);
    void dismissActivityIndicatorView();
    void displayNoInternetConnectionMessage();
    // An alert on the main queue, with the one button "OK_BUTTON".
    static void showAlert(std::string title, std::string message, AlertPresenter::Dismissal onDismissal = {});

    // The end of a job.
    void backupOrRestoreDone();
    void playDoneSound();
    void vibrate();
    void storeEKEvent();
    using JobSummaryProvider = std::function<JobSummary()>;
    void setJobSummaryProvider(JobSummaryProvider provider);

    // The device, as read when the instance was made.
    const std::string& deviceUID() const { return deviceUID_; }
    const std::string& deviceName() const { return deviceName_; }
    const std::string& deviceSystemVersion() const { return deviceSystemVersion_; }
    const std::string& devicePlatform() const { return devicePlatform_; }
    const std::string& version() const { return version_; }
    // Empty when the statistics can't be read.
    std::string memoryUsageString() const;
    // Writes it to the log, where it can be read.
    void logMemoryUsage() const;

    // Mail, composed on the main queue. The caller is the screen that presents the
    // composition and its outcome; without one nothing is composed.
    void setCaller(std::shared_ptr<AlertPresenter> caller);
    void sendEmail(Email email);

    // Resets the settings and ends the process once its alert has gone.
    void resetAllSettings();
    // How the process ends; ProcessControl::exit unless replaced.
    using ExitHandler = std::function<void(int status)>;
    void setExitHandler(ExitHandler handler);

private:
    Supervisor();

    // Construction.
    void linkAccessibilitySettings();
    void installMissingTools();
    void loadMaximumBackups();

    // The device's data sets in backup direction, the current session's in restore direction.
    std::shared_ptr<const DataSetSizes> dataSets(bool backupDirection) const;
    double engineFreeSpace() const;
    double uploadLimit() const;

    StorageType persistedStorageType() const;
    std::size_t maximumBackupsIndex() const;

    void setProgressMessage(std::optional<std::string> message);

    void composeEmail(const Email& email);
    void removeSettingsFile(const std::string& user);

    std::atomic<bool> fCanceled_{false};
    std::string deviceUID_;
    std::string deviceName_;
    std::string deviceSystemVersion_;
    std::string devicePlatform_;
    std::string version_;
    std::atomic<double> freeSpace_{0};
    // "\n\n\n-- platform-system version: identifier", appended to every mail.
    std::string deviceInfos_;
    std::atomic<StorageType> currentStorageType_{StorageType::Local};
    std::array<std::atomic<std::int32_t>, 9> maximumBackups_{};

    // Guards the fields below, which screens and jobs change from different threads.
    mutable std::mutex mutex_;
    std::shared_ptr<Application> largestApplication_;
    std::optional<std::string> progressMessage_;
    std::shared_ptr<AlertPresenter> caller_;
    DataSetSizesProvider deviceDataSets_;
    DataSetSizesProvider sessionDataSets_;
    JobSummaryProvider jobSummaryProvider_;
    ExitHandler exitHandler_;

    NotificationCenter::ObserverToken foregroundObserver_{};
    NotificationCenter::ObserverToken progressCanceledObserver_{};
};

}  // namespace stowhaven
