#include "flows/MainViewController.h"

#include "core/CydiaFileManager.h"
#include "core/DataToImport.h"
#include "core/ProcessFlags.h"
#include "core/StorageEngineStart.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "flows/MainAlerts.h"
#include "flows/MainLabels.h"
#include "items/ArchivableFolders.h"
#include "items/PhotoVideoManager.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/Strings.h"
#include "platform/dispatch/DispatchTimer.h"
#include "platform/dispatch/GlobalQueue.h"
#include "platform/dispatch/MainQueue.h"

#include <chrono>

namespace stowhaven {

namespace {

constexpr std::chrono::milliseconds kAutobackupDelay{300};

ConnectionOrientedStorageHelperProtocol* connectionOf(const std::shared_ptr<StorageHelperProtocol>& engine) {
    return answersTo<ConnectionOrientedStorageHelperProtocol>(engine);
}

bool isLoggedIn(const std::shared_ptr<StorageHelperProtocol>& engine) {
    ConnectionOrientedStorageHelperProtocol* connection = connectionOf(engine);
    return connection == nullptr || connection->isLoggedIn();
}

void logStorageStates() {
    const Supervisor& supervisor = Supervisor::shared();
    SH_LOG(
        "isStorageAddressbook:{:d} | isStorageBox:{:d} | isStorageDropbox:{:d} | isStorageFTP:{:d} | "
        "isStorageGDrive:{:d} | isStorageLocal:{:d} | isStorageOwnCloud:{:d} | isStorageSkyDrive:{:d} | "
        "isStorageSugarSync:{:d} | isLoggedIn:{:d}",
        supervisor.isStorageAddressbook(), supervisor.isStorageBox(), supervisor.isStorageDropbox(),
        supervisor.isStorageFTP(), supervisor.isStorageGDrive(), supervisor.isStorageLocal(),
        supervisor.isStorageOwnCloud(), supervisor.isStorageSkyDrive(), supervisor.isStorageSugarSync(),
        isLoggedIn(supervisor.currentStorageEngine()));
}

void rereadAutobackupSetting() {
    gAutobackupEnabled = Supervisor::shared().lowLevelGetBooleanPreferencesDataForKey("AutobackupEnabled");
    gLaunchedFromNotification = false;
}

}  // namespace

void MainViewController::viewDidLoad() {
    initializeEventListeners();
    initializeStorageEngine();
    fInitialState_ = true;
    isAutoBackupDone_ = false;
    gIsBackupMode = true;
    Supervisor& supervisor = Supervisor::shared();
    if (const auto engine = supervisor.currentStorageEngine()) engine->showProgressOnView();
    showLoadingWindow();
}

void MainViewController::initializeStorageEngine() {
    if (const auto fallback = StorageEngineStart::start()) tellStorageFallback(*fallback);
    Supervisor::shared().setCaller(AlertPresenter::shared());
}

void MainViewController::showLoadingWindow() {
    Supervisor::shared().showActivityIndicatorViewWithMessage(
        Strings::localized(gAutoScanPkgEnabled ? "SCANNING_ALL_PACKAGES" : "LOADING_PREVIOUS_BACKUP"), false);
}

void MainViewController::viewDidAppear() {
    Supervisor& supervisor = Supervisor::shared();
    const auto engine = supervisor.currentStorageEngine();
    if (fDropboxConnectMode_) {
        fDropboxConnectMode_ = false;
        if (LoginCompletion* login = answersTo<LoginCompletion>(engine)) {
            if (isLoggedIn(engine)) {
                showLoadingWindow();
                login->loginControllerDidLogin();
            } else {
                login->loginControllerDidCancel();
            }
        }
        return;
    }
    // The reset asked for in the settings is under way, and ends the process.
    if (supervisor.lowLevelGetBooleanPreferencesDataForKey("ResetSettings")) return;
    if (allScansOff()) {
        ask(MainAlerts::fixed(MainAlerts::kNoScansEnabled));
        screen_->setJobButtonsEnabled(false);
        return;
    }
    // Scans turned on since the screen last appeared give the jobs back.
    screen_->setJobButtonsEnabled(true);
    const auto storedVersion = supervisor.lowLevelGetStringPreferencesDataForKey("CurrentVersion");
    if (!storedVersion || std::is_neq(textutil::caseInsensitiveOrder(*storedVersion, supervisor.version()))) {
        supervisor.lowLevelStorePreferencesData(supervisor.version(), "CurrentVersion");
    }
    if (fInitialState_) {
        loadInitialData();
        return;
    }
    checkForDataToImport();
    if (CydiaFileManager::shared().backupSessions().empty() && !backupModeShown_) configureUIBackupMode();
    updateBackupSizeLabel();
}

void MainViewController::loadInitialData() {
    Supervisor& supervisor = Supervisor::shared();
    CydiaFileManager::shared().resetAllData();
    logStorageStates();
    if (networkEngineOffline()) {
        fallBackToLocalStorage(Strings::localized("NO_INTERNET_LOCAL_STORAGE_MESSAGE"));
    }
    const auto engine = supervisor.currentStorageEngine();
    ConnectionOrientedStorageHelperProtocol* connection = connectionOf(engine);
    if (supervisor.isStorageDropbox() && connection != nullptr && !connection->isLoggedIn()) {
        // The link is made on the service's own screen; the load follows once it is.
        fDropboxConnectMode_ = true;
        supervisor.dismissActivityIndicatorView();
        engine->setSuccessSelector(
            [weak = weak_from_this()](const HookObject&) {
                if (const auto self = weak.lock()) self->loadData();
            },
            {});
        connection->connect();
        return;
    }
    if (supervisor.isCloudStorage() && connection != nullptr && !connection->isLoggedIn()) connection->connect();
    loadData();
}

void MainViewController::fallBackToLocalStorage(const std::string& message) {
    if (const auto engine = Supervisor::shared().currentStorageEngine()) engine->hideProgress();
    StorageEngineStart::fallBackToLocalStorage();
    tellStorageFallback(message);
}

void MainViewController::tellStorageFallback(const std::string& message) {
    updateStorageIcon();
    ask({.title = Strings::localized("WARNING"), .message = message, .buttons = {Strings::localized("OK_BUTTON")}});
}

void MainViewController::loadData() {
    Supervisor& supervisor = Supervisor::shared();
    if (networkEngineOffline()) {
        supervisor.displayNoInternetConnectionMessage();
        return;
    }
    SH_LOG("Loading data...");
    if (fInitialState_) {
        showLoadingWindow();
        if (const auto engine = supervisor.currentStorageEngine()) engine->showProgressOnView();
    }
    loadUnderWay_ = true;
    // The albums are read before the load ends, so that no job starts without them.
    const bool readAlbums = fInitialState_ && supervisor.isCloudStorage();
    GlobalQueue::get(GlobalQueue::Priority::Background).async([readAlbums] {
        if (readAlbums) PhotoVideoManager::shared().reset();
        CydiaFileManager::shared().loadPackages();
    });
}

void MainViewController::reloadAll() {
    Supervisor& supervisor = Supervisor::shared();
    supervisor.resetCancelStatus();
    onMainQueue([](MainViewController& self) { self.screen_->showLabels({"...", "...", "...", "..."}); });
    showLoadingWindow();
    GlobalQueue::get(GlobalQueue::Priority::Background).async([weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self) return;
        Supervisor& services = Supervisor::shared();
        CydiaFileManager::shared().resetAllData();
        services.cloudStorageFlushCache();
        self->fInitialState_ = true;
        self->loadData();
        self->onMainQueue([](MainViewController& controller) { controller.updateStorageIcon(); });
    });
}

void MainViewController::handleDataLoaded() {
    Supervisor& supervisor = Supervisor::shared();
    CydiaFileManager& catalogue = CydiaFileManager::shared();
    if (fInitialState_) {
        ArchivableFolders::resetFolder();
        fInitialState_ = false;
    }
    supervisor.dismissActivityIndicatorView();
    onMainQueue([](MainViewController& self) { self.updateLabels(); });
    SH_LOG("Data loaded!");
    restorableDefaultApps_ = catalogue.countAppleStockApps();
    supervisor.hasValidFreeSpace();

    if (!DataToImport::url()) {
        // Taken at once: a load with a session store posts its end twice in a row, and the
        // second must not find the message again and tell it a second time.
        if (const auto error = catalogue.errorMsg()) {
            catalogue.setErrorMsg(std::nullopt);
            SH_LOG("{}", *error);
            const auto engine = supervisor.currentStorageEngine();
            const bool otherDevices = engine && engine->availableDeviceBackups().size() > 1;
            ask(MainAlerts::loadError(*error, otherDevices));
        }
        if ((gLaunchedFromNotification || gAutobackupEnabled) && !isAutoBackupDone_) {
            isAutoBackupDone_ = true;
            if (!hasOperationRestrictions()) {
                startAutomaticBackup();
                loadUnderWay_ = false;
                return;
            }
            rereadAutobackupSetting();
        }
    }
    checkForDataToImport();
    loadUnderWay_ = false;
}

void MainViewController::startAutomaticBackup() {
    SH_LOG("Activating autobackup on startup...");
    automaticBackupPending_ = true;
    DispatchTimer::shared().schedule(kAutobackupDelay, MainQueue::shared(), [weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self) return;
        CydiaFileManager& catalogue = CydiaFileManager::shared();
        catalogue.setBackupTitle("Autobackup");
        catalogue.setBackupDescription(gDisplayDateFormatter.stringFromDate(Platform::current().clock().date()));
        self->doBackup();
        self->automaticBackupPending_ = false;
        rereadAutobackupSetting();
        self->checkForDataToImport();
    });
}

void MainViewController::checkForDataToImport() {
    if (!DataToImport::url()) return;
    ask(MainAlerts::fixed(MainAlerts::kUseImportedData));
    CydiaFileManager::shared().setErrorMsg(std::nullopt);
}

}  // namespace stowhaven
