#include "storage/CloudStorageHelper.h"

#include "core/BackupSession.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/FileManager.h"
#include "platform/FileModes.h"
#include "platform/FileNames.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/TemporaryDirectory.h"
#include "platform/dispatch/NotificationCenter.h"
#include "storage/StorageLayout.h"

#include <algorithm>

namespace stowhaven {

CloudStorageHelper::CloudStorageHelper(std::unique_ptr<AbstractStorageWrapper> wrapper, StorageType type)
    : AbstractStorageHelper(std::move(wrapper)), type_(type) {}

void CloudStorageHelper::beginRequest() { wrapper()->setErrorMessage(std::nullopt); }

void CloudStorageHelper::finish(bool succeeded, const HookObject& object) {
    if (succeeded) {
        performSuccessSelector(object);
    } else {
        performFailureSelector();
    }
}

bool CloudStorageHelper::failWith(const std::string& message) {
    SH_LOG("{}", message);
    wrapper()->setErrorMessage(message);
    return false;
}

bool CloudStorageHelper::canStart(const std::optional<std::string>& problem, bool accountLinked,
                                  const std::string& serviceName) {
    return canReachService(problem) && (accountLinked || failWithNoAccountLinked(serviceName));
}

bool CloudStorageHelper::canReachService(const std::optional<std::string>& problem) {
    if (problem) return failWith(*problem);
    if (!Platform::current().reachability().isConnectedToNetwork()) return failWith("No network!");
    return true;
}

bool CloudStorageHelper::failWithNoAccountLinked(const std::string& serviceName) {
    SH_LOG("User may not be signed in!");
    return failWith("No " + serviceName + " account is linked");
}

void CloudStorageHelper::fallBackToLocalStorage() {
    SH_LOG("errorMessage:{}", errorMessage().value_or("(null)"));
    Supervisor& supervisor = Supervisor::shared();
    if (supervisor.currentStorageType() == type_) supervisor.setStorageToLocal();
}

void CloudStorageHelper::connect() {
    if (!start()) {
        fallBackToLocalStorage();
        return;
    }
    Supervisor::shared().setStorageTo(type_);
}

void CloudStorageHelper::flushCache() {
    if (!start()) fallBackToLocalStorage();
}

// Only a login tells the screens, which then read the storage anew; a start doesn't.
std::optional<std::string> CloudStorageHelper::connectAfterLogIn(bool exchanged,
                                                                 const std::optional<std::string>& exchangeError,
                                                                 const LogInNotices& notices) {
    if (!exchanged) {
        NotificationCenter::defaultCenter().post(notices.failed);
        return exchangeError.value_or(notices.refused);
    }
    connect();
    const auto error = errorMessage();
    NotificationCenter::defaultCenter().post(error ? notices.failed : notices.succeeded);
    return error;
}

std::optional<std::string> CloudStorageHelper::temporaryPathOf(const std::string& name) {
    if (!isOneFileName(name)) {
        failWith("<" + name + "> names no file");
        return std::nullopt;
    }
    return TemporaryDirectory::path() + "/" + name;
}

bool CloudStorageHelper::storeHistoryFile(const std::string& historyText, Date date,
                                          const std::function<bool(const std::string& path)>& upload) {
    SH_LOG("Backup data size: {:.2f}Kb", static_cast<double>(historyText.size()) / 1024);
    const std::string name = StorageLayout::historyFileName(date);
    const std::string path = TemporaryDirectory::path() + "/" + name;
    std::string error;
    bool stored = FileManager::writeFile(path, historyText, &error, FileModes::kPrivateFile);
    if (!stored) failWith(error);
    stored = stored && upload(path);
    FileManager::removeItem(path);
    if (stored) addExistingFile(name);
    return stored;
}

std::optional<Date> CloudStorageHelper::dateOfSessionToDelete(const std::shared_ptr<BackupSession>& session) {
    if (!session || !session->sessionDate()) {
        failWith("No session to delete");
        performFailureSelector();
        return std::nullopt;
    }
    return session->sessionDate();
}

bool CloudStorageHelper::canRenameDeviceFolderTo(const std::string& to) {
    if (isOneFileName(to)) return true;
    failWith("<" + to + "> names no device folder");
    performFailureSelector();
    return false;
}

void CloudStorageHelper::listDeviceFolderRenamed(const std::string& from, const std::string& to) {
    std::vector<std::string> devices = availableDeviceBackups();
    std::replace(devices.begin(), devices.end(), from, to);
    setAvailableDeviceBackups(std::move(devices));
}

void CloudStorageHelper::fetchNewestHistoryFile() {
    const std::vector<std::string> files = existingFiles();
    SH_LOG("{} existingFiles: {}", files.size(), textutil::joined(files, ", "));
    if (files.empty()) {
        SH_LOG("No existing data files!");
        return;
    }
    if (fetchHistoryFile(files.back())) SH_LOG("Latest backup data in <{}>", files.back());
}

void CloudStorageHelper::loadSessionFile(
    const std::string& fileName, Date date, const std::function<std::optional<std::string>()>& findId,
    const std::function<std::optional<std::string>(const std::string& id)>& fetchById) {
    beginRequest();
    // Every session holds files of the same names: the lookup runs on the ids of DATE's session.
    if (!isPrefetchedSession(StorageLayout::stamp(date))) {
        preloadFileRefUsingDate(date);
        beginRequest();
    }
    const auto id = findId();
    if (!id) {
        failWith("Couldn't find backup data FILE with name <" + fileName + ">");
        return performFailureSelector();
    }
    // A listing that failed on the way is no failure once the file was found.
    beginRequest();
    const auto path = fetchById(*id);
    if (!path) return performFailureSelector();
    callSuccessSelectorKeepingIt(*path);
}

void CloudStorageHelper::notePrefetchedSession(const std::string& stamp) {
    std::lock_guard lock(prefetchedMutex_);
    prefetchedStamp_ = stamp;
}

bool CloudStorageHelper::isPrefetchedSession(const std::string& stamp) {
    std::lock_guard lock(prefetchedMutex_);
    return prefetchedStamp_ == stamp;
}

void CloudStorageHelper::forgetPrefetchedSession() {
    std::lock_guard lock(prefetchedMutex_);
    prefetchedStamp_.reset();
}

void CloudStorageHelper::retrieveRestOfBackupHistory() {
    if (!fBackupHistoryLoaded_.exchange(true) && !existingFiles().empty()) {
        AbstractStorageHelper::retrieveRestOfBackupHistory();
        return;
    }
    NotificationCenter::defaultCenter().post("BACKUP_HISTORY_LOADED");
}

}  // namespace stowhaven
