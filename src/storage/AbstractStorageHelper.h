#pragma once

#include "platform/dispatch/NotificationCenter.h"
#include "platform/dispatch/Semaphore.h"
#include "storage/AbstractStorageWrapper.h"
#include "storage/StorageHelperProtocol.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// Where the history files that an engine fetches go: the catalogue that holds the
// sessions in memory. The engines ask it which sessions it knows and hand it each file.
class SessionHistoryReceiver {
public:
    virtual ~SessionHistoryReceiver() = default;
    // A session of that date, to the second, is known already.
    virtual bool hasBackupSessionDatedOn(Date date) = 0;
    // Reads the fetched history file at PATH and takes in its session, without notice.
    virtual void takeHistoryFile(const std::string& path) = 0;
};

// What the engines share: the request hooks and their retries, the error shown to the
// user, the semaphore that makes an asynchronous service call block, and the listings of
// device directories and history files.
//
// An operation that retries opens with
//
//     if (retryCount() == 0) setRetrySelector([=, this] { operation(arguments...); });
//
// and on failure sets its error and calls performFailureSelector(), which runs the
// operation again, at most 10 times, 5 seconds apart, on the main queue. Cancelling
// (Supervisor::isCanceled) is honoured at every step: a canceled request runs no hook.
class AbstractStorageHelper : public virtual StorageHelperProtocol,
                              public std::enable_shared_from_this<AbstractStorageHelper> {
public:
    static constexpr std::int32_t kMaximumRetries = 10;
    static constexpr std::chrono::seconds kRetryDelay{5};

    ~AbstractStorageHelper() override;

    void setSuccessSelector(SuccessHook onSuccess, FailureHook onFailure) override;
    bool hasError() const override { return errorMessage().has_value(); }
    // The wrapper's error, or none without a wrapper.
    std::optional<std::string> errorMessage() const override;

    std::vector<std::string> existingFiles() const override;
    void dropDamagedHistoryFile(const std::string& name) override;
    std::vector<std::string> availableDeviceBackups() const override;

    // The hooks' end of a request. Success hands OBJECT to the success hook; both clear
    // the hooks before they run one, so that it can set the next request's.
    void performSuccessSelector(const HookObject& object = {});
    void performFailureSelector();
    void performRetrySelector();
    // Forgets the request in hand: its hooks and its retries.
    void handleOperationCanceled();
    // The wrapper's error as an alert; nothing without one.
    void displayError();

    std::int32_t retryCount() const;
    void setRetrySelector(std::function<void()> operation);

    // The requests that have ended in failure, retries spent, since the engine was made,
    // and the error of the last of them, kept when the next request clears the engine's
    // error: a job that sends many files learns afterwards whether any of them failed.
    struct FailedRequests {
        std::uint64_t count = 0;
        std::optional<std::string> lastError;
    };
    FailedRequests failedRequests() const;

    // The history files that the receiver doesn't know yet, fetched one by one and handed
    // to it; then "BACKUP_HISTORY_LOADED". Network engines use it as it stands.
    void retrieveRestOfBackupHistory() override;

    static void setSessionHistoryReceiver(std::shared_ptr<SessionHistoryReceiver> receiver);
    static std::shared_ptr<SessionHistoryReceiver> sessionHistoryReceiver();
    // The pause between retries; shorter only in tests.
    static void setRetryDelayForTesting(std::chrono::duration<double> delay);

protected:
    explicit AbstractStorageHelper(std::unique_ptr<AbstractStorageWrapper> wrapper = nullptr);

    AbstractStorageWrapper* wrapper() const { return wrapper_.get(); }

    // Hands OBJECT to the success hook and leaves the hooks in place, so that the caller
    // can go on to its next file with the same ones; nothing without a hook.
    void callSuccessSelectorKeepingIt(const HookObject& object);

    // Waits until the asynchronous call in hand signals its end.
    void semaphoreWait();
    void semaphoreSignal();

    // A listing of history files, less those dropped as damaged.
    void setExistingFiles(std::vector<std::string> names);
    // Empties the list and forgets what was dropped from it.
    void clearExistingFiles();
    // A fresh listing that also forgets what was dropped, in one step: no reader sees the
    // list empty in between.
    void replaceExistingFiles(std::vector<std::string> names);
    // A name listed already is not listed twice.
    void addExistingFile(const std::string& name);
    void removeExistingFile(const std::string& name);
    void setAvailableDeviceBackups(std::vector<std::string> names);

    // Fetches a history file of this device into the temporary folder under its name;
    // false when it couldn't.
    virtual bool fetchHistoryFile(const std::string& name) = 0;

    // On the first listing of the base directory: renames a device directory named after
    // the device's identifier, as older versions named it, to the device's name, unless
    // one of that name exists. The rename runs without hooks and without retries.
    void migrateDeviceDirectory();

    // Observes "OPERATION_CANCELED" with handleOperationCanceled().
    void observeOperationCanceled();

private:
    struct Hooks {
        SuccessHook onSuccess;
        FailureHook onFailure;
    };
    Hooks takeHooks();

    std::unique_ptr<AbstractStorageWrapper> wrapper_;
    Semaphore semaphore_;

    mutable std::mutex mutex_;
    Hooks hooks_;
    std::int32_t retryCount_ = 0;
    std::function<void()> retrySelector_;
    FailedRequests failedRequests_;

    // Each list is walked and changed under its own lock, as transfers run beside readers.
    mutable std::recursive_mutex existingFilesMutex_;
    std::vector<std::string> existingFiles_;
    std::vector<std::string> damagedFiles_;
    mutable std::mutex availableDeviceBackupsMutex_;
    std::vector<std::string> availableDeviceBackups_;

    NotificationCenter::ObserverToken canceledObserver_{};
};

}  // namespace stowhaven
