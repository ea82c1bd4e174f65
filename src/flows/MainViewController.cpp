#include "flows/MainViewController.h"

#include "core/BackupSession.h"
#include "core/ProcessFlags.h"
#include "platform/dispatch/MainQueue.h"

#include <any>

namespace stowhaven {

std::shared_ptr<MainViewController> MainViewController::create(std::shared_ptr<MainScreen> screen) {
    return std::shared_ptr<MainViewController>(new MainViewController(std::move(screen)));
}

MainViewController::MainViewController(std::shared_ptr<MainScreen> screen) : screen_(std::move(screen)) {}

MainViewController::~MainViewController() {
    NotificationCenter& center = NotificationCenter::defaultCenter();
    for (const auto token : observers_) center.removeObserver(token);
    if (backupDoneObserver_) center.removeObserver(*backupDoneObserver_);
}

MainViewController::State MainViewController::state() const {
    if (working_) return State::Working;
    if (fInitialState_) return State::Loading;
    return backupModeShown_ ? State::IdleBackup : State::IdleRestore;
}

bool MainViewController::allScansOff() {
    return !gAutoScanStockAppsEnabled && !gAutoScanPkgEnabled && !gAutoScanAppStoreAppsEnabled &&
           !gAutoScanOtherOptionsEnabled && !gAutoScanPhotosEnabled && !gAutoScanVideosEnabled;
}

void MainViewController::onMainQueue(std::function<void(MainViewController&)> block) {
    MainQueue::shared().async([weak = weak_from_this(), block = std::move(block)] {
        if (const auto self = weak.lock()) block(*self);
    });
}

void MainViewController::ask(Alert alert) {
    onMainQueue([alert = std::move(alert)](MainViewController& self) {
        AlertPresenter::shared()->present(alert,
                                          [weak = self.weak_from_this(), tag = alert.tag](const AlertAnswer& answer) {
                                              if (const auto controller = weak.lock())
                                                  controller->alertAnswered(tag, answer);
                                          });
    });
}

void MainViewController::initializeEventListeners() {
    NotificationCenter& center = NotificationCenter::defaultCenter();
    // The loading notices are handled where they are posted, the others on the main queue.
    const auto onPoster = [&](const char* name, std::function<void(MainViewController&, const Notification&)> handler) {
        observers_.push_back(
            center.addObserver(name, nullptr, [weak = weak_from_this(), handler](const Notification& note) {
                if (const auto self = weak.lock()) handler(*self, note);
            }));
    };
    const auto onMain = [&](const char* name, std::function<void(MainViewController&, const Notification&)> handler) {
        observers_.push_back(center.addObserver(name, &MainQueue::shared(),
                                                [weak = weak_from_this(), handler](const Notification& note) {
                                                    if (const auto self = weak.lock()) handler(*self, note);
                                                }));
    };
    onPoster("RESTORE_DONE", [](MainViewController& self, const Notification&) { self.handleRestoreDone(); });
    onPoster("DATA_IMPORTED", [](MainViewController& self, const Notification& note) {
        if (const auto* session = std::any_cast<std::shared_ptr<BackupSession>>(&note.object)) {
            self.handleDataImported(*session);
        }
    });
    onPoster("DATA_LOADED", [](MainViewController& self, const Notification&) { self.handleDataLoaded(); });
    onPoster("RELOAD_DATA_NEEDED",
             [](MainViewController& self, const Notification&) { self.handleReloadDataNeeded(); });
    onPoster("BOX_LOGIN_SUCCESS", [](MainViewController& self, const Notification&) { self.reloadAll(); });
    onPoster("RELOAD_DATA_NOW", [](MainViewController& self, const Notification&) { self.reloadAll(); });
    onMain("UPDATE_PROGRESS_TEXT", [](MainViewController& self, const Notification& note) {
        if (const auto* text = std::any_cast<std::string>(&note.object)) self.screen_->showProgressText(*text);
    });
    onMain("UPDATE_PROGRESS", [](MainViewController& self, const Notification& note) {
        if (const auto* fraction = std::any_cast<double>(&note.object)) self.screen_->showProgressFraction(*fraction);
    });
    onMain("UPDATE_TRANSFER_BANNER", [](MainViewController& self, const Notification& note) {
        if (const auto* text = std::any_cast<std::string>(&note.object)) self.screen_->showTransferBanner(*text);
    });
    onMain("ALL_ALBUMS_ACCOUNTED", [](MainViewController& self, const Notification&) { self.updateBackupSizeLabel(); });
}

}  // namespace stowhaven
