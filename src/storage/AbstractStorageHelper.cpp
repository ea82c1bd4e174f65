#include "storage/AbstractStorageHelper.h"

#include "core/Supervisor.h"
#include "platform/Log.h"
#include "platform/Strings.h"
#include "platform/TemporaryDirectory.h"
#include "platform/dispatch/DispatchTimer.h"
#include "platform/dispatch/MainQueue.h"
#include "storage/StorageLayout.h"

#include <algorithm>

namespace stowhaven {

namespace {

std::mutex gSettingsMutex;
std::shared_ptr<SessionHistoryReceiver> gReceiver;
std::chrono::duration<double> gRetryDelay = AbstractStorageHelper::kRetryDelay;

std::chrono::duration<double> retryDelay() {
    std::lock_guard lock(gSettingsMutex);
    return gRetryDelay;
}

bool isCanceled() { return Supervisor::shared().isCanceled(); }

}  // namespace

AbstractStorageHelper::AbstractStorageHelper(std::unique_ptr<AbstractStorageWrapper> wrapper)
    : wrapper_(std::move(wrapper)) {}

AbstractStorageHelper::~AbstractStorageHelper() {
    if (canceledObserver_ != NotificationCenter::ObserverToken{}) {
        NotificationCenter::defaultCenter().removeObserver(canceledObserver_);
    }
}

void AbstractStorageHelper::setSuccessSelector(SuccessHook onSuccess, FailureHook onFailure) {
    std::lock_guard lock(mutex_);
    hooks_.onFailure = std::move(onFailure);
    hooks_.onSuccess = std::move(onSuccess);
    retryCount_ = 0;
    retrySelector_ = nullptr;
}

std::optional<std::string> AbstractStorageHelper::errorMessage() const {
    return wrapper_ ? wrapper_->errorMessage() : std::nullopt;
}

AbstractStorageHelper::Hooks AbstractStorageHelper::takeHooks() {
    std::lock_guard lock(mutex_);
    Hooks taken = std::move(hooks_);
    hooks_ = {};
    return taken;
}

void AbstractStorageHelper::performSuccessSelector(const HookObject& object) {
    {
        std::lock_guard lock(mutex_);
        retryCount_ = 0;
        retrySelector_ = nullptr;
    }
    const Hooks hooks = takeHooks();
    if (!isCanceled() && hooks.onSuccess) hooks.onSuccess(object);
}

void AbstractStorageHelper::callSuccessSelectorKeepingIt(const HookObject& object) {
    SuccessHook onSuccess;
    {
        std::lock_guard lock(mutex_);
        onSuccess = hooks_.onSuccess;
    }
    if (onSuccess) onSuccess(object);
}

void AbstractStorageHelper::performFailureSelector() {
    SH_LOG("errorMessage:{}", errorMessage().value_or("(null)"));
    bool retries = false;
    {
        std::lock_guard lock(mutex_);
        retries = retrySelector_ && retryCount_ < kMaximumRetries;
    }
    if (retries) {
        // The hooks stay in place for the next attempt.
        performRetrySelector();
        return;
    }
    displayError();
    const auto error = errorMessage();
    {
        std::lock_guard lock(mutex_);
        retryCount_ = 0;
        retrySelector_ = nullptr;
        ++failedRequests_.count;
        failedRequests_.lastError = error;
    }
    const Hooks hooks = takeHooks();
    if (!isCanceled() && hooks.onFailure) hooks.onFailure();
}

void AbstractStorageHelper::performRetrySelector() {
    std::int32_t attempt = 0;
    bool hasSelector = false;
    {
        std::lock_guard lock(mutex_);
        attempt = ++retryCount_;
        hasSelector = static_cast<bool>(retrySelector_);
    }
    if (isCanceled()) return;
    if (!hasSelector) {
        SH_LOG("Retry selector is NULL!");
        return;
    }
    Supervisor::shared().notifyProgress(std::nullopt, fmt::format("Retrying {}/{} in {}s...", attempt, kMaximumRetries,
                                                                  static_cast<int>(kRetryDelay.count())));
    const std::weak_ptr<AbstractStorageHelper> helper = weak_from_this();
    dispatchAfter(retryDelay(), MainQueue::shared(), [helper] {
        const auto self = helper.lock();
        if (!self || isCanceled()) return;
        std::function<void()> operation;
        {
            std::lock_guard lock(self->mutex_);
            operation = self->retrySelector_;
        }
        if (operation) operation();
    });
}

void AbstractStorageHelper::handleOperationCanceled() {
    setSuccessSelector(nullptr, nullptr);
    SH_LOG("Done!");
}

void AbstractStorageHelper::displayError() {
    const auto message = errorMessage();
    if (!message) return;
    Supervisor::showAlert(Strings::localized("WARNING"), *message);
}

std::int32_t AbstractStorageHelper::retryCount() const {
    std::lock_guard lock(mutex_);
    return retryCount_;
}

AbstractStorageHelper::FailedRequests AbstractStorageHelper::failedRequests() const {
    std::lock_guard lock(mutex_);
    return failedRequests_;
}

void AbstractStorageHelper::setRetrySelector(std::function<void()> operation) {
    std::lock_guard lock(mutex_);
    retrySelector_ = std::move(operation);
}

void AbstractStorageHelper::semaphoreWait() { semaphore_.wait(); }

void AbstractStorageHelper::semaphoreSignal() { semaphore_.signal(); }

std::vector<std::string> AbstractStorageHelper::existingFiles() const {
    std::lock_guard lock(existingFilesMutex_);
    return existingFiles_;
}

void AbstractStorageHelper::setExistingFiles(std::vector<std::string> names) {
    std::lock_guard lock(existingFilesMutex_);
    std::erase_if(names, [this](const std::string& name) {
        return std::find(damagedFiles_.begin(), damagedFiles_.end(), name) != damagedFiles_.end();
    });
    existingFiles_ = std::move(names);
}

void AbstractStorageHelper::clearExistingFiles() { replaceExistingFiles({}); }

void AbstractStorageHelper::replaceExistingFiles(std::vector<std::string> names) {
    std::lock_guard lock(existingFilesMutex_);
    existingFiles_ = std::move(names);
    damagedFiles_.clear();
}

void AbstractStorageHelper::dropDamagedHistoryFile(const std::string& name) {
    std::lock_guard lock(existingFilesMutex_);
    std::erase(existingFiles_, name);
    damagedFiles_.push_back(name);
}

void AbstractStorageHelper::addExistingFile(const std::string& name) {
    std::lock_guard lock(existingFilesMutex_);
    if (std::find(existingFiles_.begin(), existingFiles_.end(), name) == existingFiles_.end()) {
        existingFiles_.push_back(name);
    }
}

void AbstractStorageHelper::removeExistingFile(const std::string& name) {
    std::lock_guard lock(existingFilesMutex_);
    std::erase(existingFiles_, name);
}

std::vector<std::string> AbstractStorageHelper::availableDeviceBackups() const {
    std::lock_guard lock(availableDeviceBackupsMutex_);
    return availableDeviceBackups_;
}

void AbstractStorageHelper::setAvailableDeviceBackups(std::vector<std::string> names) {
    std::lock_guard lock(availableDeviceBackupsMutex_);
    availableDeviceBackups_ = std::move(names);
}

void AbstractStorageHelper::retrieveRestOfBackupHistory() {
    if (existingFiles().empty()) return;
    setSuccessSelector(nullptr, nullptr);
    const auto receiver = sessionHistoryReceiver();
    std::lock_guard lock(existingFilesMutex_);
    SH_LOG("Retrieving {} backup history file(s)...", existingFiles_.size());
    for (const std::string& name : existingFiles_) {
        const auto date = StorageLayout::dateOfHistoryFile(name);
        if (!receiver || (date && receiver->hasBackupSessionDatedOn(*date))) continue;
        if (fetchHistoryFile(name)) {
            receiver->takeHistoryFile(TemporaryDirectory::path() + "/" + name);
        } else {
            SH_LOG("Couldn't retrieve backup data <{}>", name);
        }
    }
    NotificationCenter::defaultCenter().post("BACKUP_HISTORY_LOADED");
    hideProgress();
}

void AbstractStorageHelper::migrateDeviceDirectory() {
    const Supervisor& supervisor = Supervisor::shared();
    const std::string& identifier = supervisor.deviceUID();
    const std::string& name = supervisor.deviceName();
    std::vector<std::string> devices = availableDeviceBackups();
    const auto hasDirectory = [&](const std::string& directory) {
        return std::find(devices.begin(), devices.end(), directory) != devices.end();
    };
    if (identifier == name || !hasDirectory(identifier)) return;
    if (hasDirectory(name)) {
        SH_LOG("Data directories <{}> & <{}> BOTH exists. Can't migrate", identifier, name);
        return;
    }
    SH_LOG("Migrating from data directory from {} to {}...", identifier, name);
    Hooks saved = takeHooks();
    {
        std::lock_guard lock(mutex_);
        retryCount_ = kMaximumRetries;
    }
    moveFromPath(identifier, name);
    if (hasError()) {
        SH_LOG("FAILED to migrate from data directory from {} to {}. Error: {}!", identifier, name,
               errorMessage().value_or("(null)"));
    } else {
        std::replace(devices.begin(), devices.end(), identifier, name);
        setAvailableDeviceBackups(std::move(devices));
    }
    std::lock_guard lock(mutex_);
    hooks_ = std::move(saved);
    retryCount_ = 0;
}

void AbstractStorageHelper::observeOperationCanceled() {
    const std::weak_ptr<AbstractStorageHelper> helper = weak_from_this();
    canceledObserver_ =
        NotificationCenter::defaultCenter().addObserver("OPERATION_CANCELED", nullptr, [helper](const Notification&) {
            if (const auto self = helper.lock()) self->handleOperationCanceled();
        });
}

void AbstractStorageHelper::setSessionHistoryReceiver(std::shared_ptr<SessionHistoryReceiver> receiver) {
    std::lock_guard lock(gSettingsMutex);
    gReceiver = std::move(receiver);
}

std::shared_ptr<SessionHistoryReceiver> AbstractStorageHelper::sessionHistoryReceiver() {
    std::lock_guard lock(gSettingsMutex);
    return gReceiver;
}

void AbstractStorageHelper::setRetryDelayForTesting(std::chrono::duration<double> delay) {
    std::lock_guard lock(gSettingsMutex);
    gRetryDelay = delay;
}

}  // namespace stowhaven
