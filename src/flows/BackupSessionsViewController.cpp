#include "flows/BackupSessionsViewController.h"

#include "core/CydiaFileManager.h"
#include "core/Supervisor.h"
#include "flows/HistoryWork.h"
#include "platform/Log.h"
#include "platform/Strings.h"
#include "platform/dispatch/NotificationCenter.h"
#include "storage/StorageEngines.h"

#include <fmt/format.h>

#include <algorithm>

namespace stowhaven {

namespace {

using Self = BackupSessionsViewController;

// The Dropbox engine, made if it isn't yet; none in a program without one.
std::shared_ptr<StorageHelperProtocol> dropboxEngine() {
    if (auto engine = StorageEngines::engine(StorageType::Dropbox)) return engine;
    return StorageEngines::create(StorageType::Dropbox);
}

}  // namespace

std::shared_ptr<Self> Self::create(std::shared_ptr<HistoryScreen> screen) {
    return std::shared_ptr<Self>(new Self(std::move(screen)));
}

std::string Self::dateOf(const BackupSession& session) {
    return session.sessionDate() ? history::viewDate(*session.sessionDate()) : "";
}

std::vector<std::string> Self::summaryOf(const BackupSession& session) {
    std::string counts = fmt::format("{} {}", session.nbPackages(), Strings::localized("PACKAGES"));
    if (const int stockApps = session.countAppleStockApps(); stockApps != 0) {
        counts += fmt::format(", {} {}", stockApps, Strings::localized("APPLE_APPS_DATA"));
    }
    if (const std::size_t apps = session.applications() ? session.applications()->size() : 0; apps != 0) {
        counts += fmt::format(" & {} {}", apps, Strings::localized("APPS"));
    }
    const auto& description = session.quickDescription();
    return {fmt::format("{} {}", Strings::localized("LAST_BACKUP_LABEL"), dateOf(session)), counts,
            session.title().value_or(Strings::localized("UNTITLED_BACKUP")),
            description && !description->empty() ? *description
                                                 : fmt::format("({})", Strings::localized("NO_DESCRIPTION_LABEL"))};
}

void Self::refreshListBackupSessions() {
    listBackupSessions_ = CydiaFileManager::shared().backupSessions();
    std::reverse(listBackupSessions_.begin(), listBackupSessions_.end());
}

std::optional<std::size_t> Self::rowOf(const std::shared_ptr<BackupSession>& session) const {
    const auto found = std::find(listBackupSessions_.begin(), listBackupSessions_.end(), session);
    if (!session || found == listBackupSessions_.end()) return std::nullopt;
    return static_cast<std::size_t>(found - listBackupSessions_.begin());
}

// A file engine lists more history files than the load read: the rest are fetched first.
void Self::viewDidAppear() {
    refreshListBackupSessions();
    selectedBackupSession_ = CydiaFileManager::shared().currentBackupSession();
    const Supervisor& supervisor = Supervisor::shared();
    const auto engine = supervisor.currentStorageEngine();
    if (!supervisor.isCloudStorage() || !engine || engine->existingFiles().size() == listBackupSessions_.size()) {
        handleBackupHistoryLoaded();
        return;
    }
    waiting_.start(Strings::localized("DOWNLOAD_BACKUP_HISTORY"));
    history::callInBackground([engine] { engine->retrieveRestOfBackupHistory(); },
                              [weak = weak_from_this()] {
                                  if (const auto self = weak.lock()) {
                                      self->waiting_.end();
                                      self->handleBackupHistoryLoaded();
                                  }
                              });
}

void Self::handleBackupHistoryLoaded() {
    refreshListBackupSessions();
    selectedBackupSession_ = CydiaFileManager::shared().currentBackupSession();
    selectActiveBackupSession();
}

void Self::selectActiveBackupSession() {
    std::vector<std::string> rows;
    for (const auto& session : listBackupSessions_) {
        rows.push_back(
            fmt::format("{}  {}", dateOf(*session), session->title().value_or(Strings::localized("UNTITLED_BACKUP"))));
    }
    const auto row = rowOf(selectedBackupSession_);
    screen_->showRows(rows, row);
    screen_->showDetails(selectedBackupSession_ ? summaryOf(*selectedBackupSession_) : std::vector<std::string>{});
}

void Self::selectRow(std::size_t row) {
    if (row >= listBackupSessions_.size()) return;
    selectedBackupSession_ = listBackupSessions_[row];
    screen_->showDetails(summaryOf(*selectedBackupSession_));
}

void Self::askToDeleteSelected() {
    if (!selectedBackupSession_) return;
    AlertPresenter::shared()->present({kDeleteSession,
                                       Strings::localized("DELETE_CONFIRMATION_TITLE"),
                                       Strings::localized("DELETE_BACKUP_SESSION_MESSAGE"),
                                       {Strings::localized("NO_BUTTON"), Strings::localized("YES_BUTTON")}},
                                      [weak = weak_from_this()](const AlertAnswer& answer) {
                                          if (const auto self = weak.lock(); self && answer.buttonIndex == 1)
                                              self->deleteBackupSession();
                                      });
}

// A file engine deletes the session's files first; the address book's note is written anew
// by the catalogue.
void Self::deleteBackupSession() {
    const auto session = selectedBackupSession_;
    if (!session) return;
    Supervisor& supervisor = Supervisor::shared();
    const auto engine = supervisor.currentStorageEngine();
    if (!supervisor.isCloudStorage() || !engine) {
        handleDeletedBackupSession(session);
        return;
    }
    waiting_.start(Strings::format("DELETING_FROM", supervisor.storageEngineName()));
    const auto weak = weak_from_this();
    engine->setSuccessSelector(
        history::successOnMain(weak,
                               [session](Self& self, const HookObject&) { self.handleDeletedBackupSession(session); }),
        history::failureOnMain(weak, [](Self& self) { self.handleBackupHistoryLoaded(); }));
    history::callInBackground([engine, session] { engine->deleteBackupSession(session); },
                              [weak] {
                                  if (const auto self = weak.lock()) self->waiting_.end();
                              });
}

void Self::handleDeletedBackupSession(const std::shared_ptr<BackupSession>& deleted) {
    const std::size_t row = rowOf(deleted).value_or(0);
    CydiaFileManager::shared().deleteBackupSession(deleted);
    refreshListBackupSessions();
    fNeedReload_ = true;
    if (listBackupSessions_.empty()) {
        selectedBackupSession_.reset();
        viewWillDisappear();
        return;
    }
    // The row above the deleted one; the first stays the first.
    const std::size_t above = row == 0 ? 0 : row - 1;
    selectedBackupSession_ = above < listBackupSessions_.size() ? listBackupSessions_[above] : nullptr;
    selectActiveBackupSession();
}

void Self::viewWillDisappear() {
    if (closed_) return;
    closed_ = true;
    CydiaFileManager& catalogue = CydiaFileManager::shared();
    const auto current = catalogue.currentBackupSession();
    const bool changed = selectedBackupSession_ && (!current || !selectedBackupSession_->isEqual(*current));
    if (changed) {
        catalogue.changeCurrentBackupSessionTo(selectedBackupSession_);
        NotificationCenter::defaultCenter().post("LOAD_DATA");
    }
    if (changed || fNeedReload_) NotificationCenter::defaultCenter().post("RELOAD_DATA_NEEDED");
    screen_->close();
}

bool Self::canUploadToDropbox() const {
    return Supervisor::shared().isStorageAddressbook() && selectedBackupSession_ &&
           !selectedBackupSession_->isInDropbox() && uploadEnded_ && dropboxEngine();
}

void Self::askToUploadToDropbox() {
    if (!canUploadToDropbox()) return;
    AlertPresenter::shared()->present({kUploadToDropbox,
                                       Strings::localized("UPLOAD_TO_DROPBOX_TITLE"),
                                       Strings::localized("UPLOAD_TO_DROPBOX_MESSAGE"),
                                       {Strings::localized("NO_BUTTON"), Strings::localized("YES_BUTTON")}},
                                      [weak = weak_from_this()](const AlertAnswer& answer) {
                                          if (const auto self = weak.lock(); self && answer.buttonIndex == 1)
                                              self->uploadToDropbox();
                                      });
}

// An engine that isn't logged in connects first, and goes on once it is.
void Self::uploadToDropbox() {
    if (!canUploadToDropbox()) return;
    const auto dropbox = dropboxEngine();
    uploading_ = selectedBackupSession_;
    uploadEnded_ = false;
    fNeedReload_ = true;
    auto* connection = dynamic_cast<ConnectionOrientedStorageHelperProtocol*>(dropbox.get());
    if (connection == nullptr || connection->isLoggedIn()) {
        proceedWithUpload();
        return;
    }
    const auto weak = weak_from_this();
    dropbox->setSuccessSelector(
        history::successOnMain(weak, [](Self& self, const HookObject&) { self.proceedWithUpload(); }),
        history::failureOnMain(weak, [](Self& self) { self.handleUploadToDropboxFailed(); }));
    waiting_.startQuietly();
    history::callInBackground([dropbox, connection] { connection->connect(); },
                              [weak] {
                                  if (const auto self = weak.lock()) self->waiting_.endQuietly();
                              });
}

// Storing on Dropbox makes it the current engine for the time of the upload; local storage
// is current after it, whichever way it ends.
void Self::proceedWithUpload() {
    const auto session = uploading_;
    const auto dropbox = StorageEngines::engine(StorageType::Dropbox);
    if (!session || !dropbox) {
        handleUploadToDropboxFailed();
        return;
    }
    waiting_.start(Strings::localized("UPLOADING_TO_DROPBOX"));
    Supervisor::shared().setStorageToDropbox();
    const std::string engineName = Supervisor::shared().storageEngineName();
    const auto weak = weak_from_this();
    dropbox->setSuccessSelector(
        history::successOnMain(
            weak, [engineName](Self& self, const HookObject&) { self.handleUploadToDropboxDone(engineName); }),
        history::failureOnMain(weak, [](Self& self) { self.handleUploadToDropboxFailed(); }));
    history::callInBackground([session] { CydiaFileManager::shared().uploadToCloud(session); },
                              [weak, dropbox] {
                                  const auto self = weak.lock();
                                  if (!self) return;
                                  self->waiting_.end();
                                  // An engine that ended without either hook: its error tells.
                                  if (!self->uploadEnded_) {
                                      dropbox->hasError()
                                          ? self->handleUploadToDropboxFailed()
                                          : self->handleUploadToDropboxDone(Supervisor::shared().storageEngineName());
                                  }
                              });
}

void Self::handleUploadToDropboxDone(const std::string& engineName) {
    if (uploadEnded_) return;
    uploadEnded_ = true;
    if (const auto dropbox = StorageEngines::engine(StorageType::Dropbox))
        dropbox->setSuccessSelector(nullptr, nullptr);
    if (uploading_) uploading_->setIsInDropbox(true);
    Supervisor::shared().setStorageToLocal();
    AlertPresenter::shared()->present({kUploadedToDropbox,
                                       Strings::localized("INFORMATION_TITLE"),
                                       fmt::format("{} {}!", Strings::localized("BACKUP_ON_CLOUD"), engineName),
                                       {Strings::localized("OK_BUTTON")}},
                                      {});
}

void Self::handleUploadToDropboxFailed() {
    if (uploadEnded_) return;
    uploadEnded_ = true;
    if (const auto dropbox = StorageEngines::engine(StorageType::Dropbox))
        dropbox->setSuccessSelector(nullptr, nullptr);
    SH_LOG("The upload to Dropbox failed");
    Supervisor::shared().setStorageToLocal();
}

}  // namespace stowhaven
