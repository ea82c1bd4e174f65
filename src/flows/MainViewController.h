#pragma once

#include "core/AlertPresenter.h"
#include "flows/MainScreen.h"
#include "platform/dispatch/NotificationCenter.h"
#include "platform/dispatch/OperationQueue.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

class BackupSession;
class Operation;

// The driver of the program: whatever the screen looks like, this decides what is loaded,
// when a job may start, which questions are put to the user and in which order, and what
// follows the end of a job. It asks through the process's AlertPresenter and
// ProgressDisplay and shows the rest on its MainScreen; each question's answer comes back
// by the alert's tag.
//
// Made with create(); its handlers run on the main queue, except those of the loading
// notices, which run where the notice is posted.
class MainViewController : public std::enable_shared_from_this<MainViewController> {
public:
    enum class State { Loading, IdleBackup, IdleRestore, Working };

    static std::shared_ptr<MainViewController> create(std::shared_ptr<MainScreen> screen);
    ~MainViewController();
    MainViewController(const MainViewController&) = delete;
    MainViewController& operator=(const MainViewController&) = delete;

    // The first appearance: the listeners, the storage engine, then the first load.
    void viewDidLoad();
    void viewDidAppear();

    // Loading.
    void loadData();
    void reloadAll();
    void handleDataLoaded();
    void checkForDataToImport();

    // Jobs, in the direction the user works.
    void doOperation();
    // Asks whether the running job is to be canceled.
    void doCancelOperation();
    // Shows why no job may start now, if so.
    bool hasOperationRestrictions();
    void doBackup();
    void doRestore();

    // The answer to the alert of the tag, as the user gave it.
    void alertAnswered(int tag, const AlertAnswer& answer);

    // The screen.
    void configureUIBackupMode();
    void configureUIRestoreMode();
    void storageButtonClicked();
    void showDeviceBackup();
    void showOtherDeviceBackups();
    void showSettings();
    void showBackupDataConfiguration();
    void showRestoreDataConfiguration();
    void updateLabels();
    void updateBackupSizeLabel();

    State state() const;
    bool isInitialState() const { return fInitialState_; }
    bool isAutoBackupDone() const { return isAutoBackupDone_; }
    // A run whose job is named from the start has no automatic backup to decide on.
    void setAutoBackupDone(bool done) { isAutoBackupDone_ = done; }
    int restorableDefaultApps() const { return restorableDefaultApps_; }
    // From the start of a load until its end is handled.
    bool isLoadUnderWay() const { return loadUnderWay_; }
    // The automatic backup is decided on and starts in a moment.
    bool isAutomaticBackupPending() const { return automaticBackupPending_; }

private:
    explicit MainViewController(std::shared_ptr<MainScreen> screen);

    // Start-up.
    void initializeEventListeners();
    void initializeStorageEngine();
    void showLoadingWindow();
    void loadInitialData();
    void fallBackToLocalStorage(const std::string& message);
    void tellStorageFallback(const std::string& message);
    void startAutomaticBackup();

    // Questions and the chains that follow their answers.
    void ask(Alert alert);
    void askToBackup();
    void askToRestore();
    void askBackupTitle();
    void askBackupDescription();
    void askEncryptionKey();
    void askPackageFWCompatible();
    void askIgnorePhotoVideoAlbums();
    void askRestoreQuestionsAfterConfirmation();
    void continueBackupChain();
    void takeBackupTitle(const std::optional<std::string>& text);
    void takeBackupDescription(const std::optional<std::string>& text);
    void startBackupOrAskKey();
    void takeEncryptionKey(const std::optional<std::string>& text);
    void takeRestoreKey(const std::optional<std::string>& text);
    void restoreOnlyFirmwareCompatiblePackages();

    // Jobs.
    void startJob(std::shared_ptr<Operation> job);
    void handleBackupDone();
    void handleRestoreDone();
    void handleDataImported(const std::shared_ptr<BackupSession>& session);
    void handleReloadDataNeeded();
    void resetOperationStatus();
    void displayNothingToDoMessage();
    void showConfiguration(bool backupMode);
    static bool allScansOff();
    // The engine works over the network, and there is none.
    static bool networkEngineOffline();
    void updateStorageIcon();

    // Runs BLOCK on the main queue while the controller lives.
    void onMainQueue(std::function<void(MainViewController&)> block);

    std::shared_ptr<MainScreen> screen_;
    std::atomic<bool> fInitialState_{true};
    std::atomic<bool> isAutoBackupDone_{false};
    std::atomic<bool> fDropboxConnectMode_{false};
    std::atomic<bool> backupModeShown_{true};
    std::atomic<bool> working_{false};
    std::atomic<bool> loadUnderWay_{false};
    std::atomic<bool> automaticBackupPending_{false};
    std::atomic<int> restorableDefaultApps_{0};
    // The first entry of a new key, while it waits for its confirmation.
    std::optional<std::string> encryptionKey_;
    std::unique_ptr<OperationQueue> jobQueue_;
    std::vector<NotificationCenter::ObserverToken> observers_;
    std::optional<NotificationCenter::ObserverToken> backupDoneObserver_;
};

}  // namespace stowhaven
