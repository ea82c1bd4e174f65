#include "storage/dropbox/DropboxHelper.h"

#include "core/Supervisor.h"
#include "platform/FileNames.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/dispatch/GlobalQueue.h"
#include "platform/dispatch/MainQueue.h"
#include "platform/dispatch/NotificationCenter.h"
#include "storage/StorageEngines.h"
#include "storage/StorageLayout.h"
#include "storage/dropbox/DropboxCredentials.h"

#include <algorithm>

namespace stowhaven {

namespace {

// The base directory of the settings, with a "/" in front.
std::string mainDirectoryOfSettings() {
    auto path = Supervisor::shared().lowLevelGetStringPreferencesDataForKey("DropboxStoragePath");
    if (!path || path->empty()) {
        SH_LOG("Setting default root directory...");
        path = std::string(StorageLayout::kBaseDirectoryName);
    }
    if (!path->starts_with('/')) path = "/" + *path;
    return *path;
}

}  // namespace

std::shared_ptr<DropboxHelper> DropboxHelper::createDropboxHelper() {
    StorageEngines::registerFactory(StorageType::Dropbox, [] {
        auto helper = std::make_shared<DropboxHelper>();
        helper->observeOperationCanceled();
        helper->setupDropboxSession();
        return helper;
    });
    return std::dynamic_pointer_cast<DropboxHelper>(StorageEngines::create(StorageType::Dropbox));
}

void DropboxHelper::unlink() {
    DropboxCredentials::unlinkAll();
    if (const auto engine = std::dynamic_pointer_cast<DropboxHelper>(StorageEngines::engine(StorageType::Dropbox)))
        engine->forgetLink();
}

void DropboxHelper::forgetLink() {
    std::lock_guard lock(mutex_);
    service_.reset();
    account_.reset();
}

DropboxHelper::DropboxHelper() : mainDirectory_(mainDirectoryOfSettings()) {}

void DropboxHelper::setupDropboxSession() {
    std::string error;
    const auto app = DropboxApp::fromEnvironment(error);
    if (!app) {
        // The start tells the user, as it tells why any engine gave way.
        setErrorMessage(error);
        fallBackToLocalStorage();
        return;
    }
    const auto credentials = DropboxCredentials::saved(app->key);
    if (!credentials) {
        SH_LOG("No user is linked");
        setErrorMessage(std::string(kNotLinkedMessage));
        fallBackToLocalStorage();
        return;
    }
    {
        std::lock_guard lock(mutex_);
        service_ = std::make_shared<DropboxService>(*app, *credentials);
    }
    if (Supervisor::shared().isStorageDropbox() && Platform::current().reachability().isConnectedToNetwork() &&
        !loadAccountInfos()) {
        fallBackToLocalStorage();
    }
}

std::optional<std::string> DropboxHelper::errorMessage() const {
    std::lock_guard lock(mutex_);
    return errorMessage_;
}

void DropboxHelper::setErrorMessage(std::optional<std::string> message) {
    std::lock_guard lock(mutex_);
    errorMessage_ = std::move(message);
}

std::shared_ptr<DropboxService> DropboxHelper::service() const {
    std::lock_guard lock(mutex_);
    return service_;
}

std::shared_ptr<DropboxService> DropboxHelper::linkedService() {
    auto linked = service();
    setErrorMessage(linked ? std::nullopt : std::optional<std::string>(kNotLinkedMessage));
    return linked;
}

void DropboxHelper::fallBackToLocalStorage() {
    SH_LOG("errorMessage:{}", errorMessage().value_or("(null)"));
    Supervisor& supervisor = Supervisor::shared();
    if (supervisor.isStorageDropbox()) supervisor.setStorageToLocal();
}

void DropboxHelper::finish(bool succeeded, const HookObject& object) {
    if (succeeded) {
        performSuccessSelector(object);
    } else {
        performFailureSelector();
    }
}

std::string DropboxHelper::deviceDirectory() const {
    return StorageLayout::deviceDirectory(mainDirectory_, Supervisor::shared().deviceName());
}

std::string DropboxHelper::sessionDirectory(Date date) const {
    return StorageLayout::sessionDirectory(deviceDirectory(), date);
}

bool DropboxHelper::isCleanRelativePath(const std::string& path) {
    std::size_t start = 0;
    for (std::size_t slash = 0; slash != std::string::npos; start = slash + 1) {
        slash = path.find('/', start);
        if (!isOneFileName(std::string_view(path).substr(start, slash - start))) {
            setErrorMessage("<" + path + "> names no entry of a folder");
            return false;
        }
    }
    return true;
}

// Linking is the terminal login's work: without a link there is nothing to connect.
void DropboxHelper::connect() {
    if (!service()) {
        setErrorMessage(std::string(kNotLinkedMessage));
        fallBackToLocalStorage();
        performFailureSelector();
        return;
    }
    loginControllerDidLogin();
}

void DropboxHelper::disconnect() {
    unlink();
    forgetLink();
    SH_LOG("Disconnected!");
}

bool DropboxHelper::isLoggedIn() {
    return Platform::current().reachability().isConnectedToNetwork() && service() != nullptr;
}

std::string DropboxHelper::accountName() {
    std::lock_guard lock(mutex_);
    return account_ ? account_->displayName : std::string();
}

void DropboxHelper::loginControllerDidLogin() {
    if (loadAccountInfos()) performSuccessSelector();
}

void DropboxHelper::loginControllerDidCancel() {
    Supervisor& supervisor = Supervisor::shared();
    if (supervisor.isStorageDropbox()) {
        supervisor.setStorageToLocal();
        supervisor.persistStorageType();
    }
    performFailureSelector();
}

bool DropboxHelper::loadAccountInfos() {
    const auto linked = linkedService();
    if (!linked) {
        performFailureSelector();
        return false;
    }
    const auto answer = linked->accountInfo();
    std::string unreadable;
    const auto account = answer.error ? std::nullopt : dropbox::readAccount(answer.body, unreadable);
    if (!account) {
        setErrorMessage(answer.error.value_or(unreadable));
        // The service no longer honours the link.
        if (answer.status == 401 || answer.status == 403) {
            disconnect();
            fallBackToLocalStorage();
        }
        performFailureSelector();
        return false;
    }
    freeSpace_ = static_cast<double>(account->totalBytes - account->consumedBytes) * kMegabytesPerByte;
    SH_LOG("FreeSpace: {}Mb", freeSpace_.load());
    {
        std::lock_guard lock(mutex_);
        account_ = account;
    }
    if (setupInitialStorageStructure()) return true;
    performFailureSelector();
    return false;
}

// Only the quota: the listings are the job's, which may be changing them meanwhile.
void DropboxHelper::refreshFreeSpace() {
    const auto linked = service();
    if (!linked) return;
    const std::weak_ptr<DropboxHelper> weak = std::static_pointer_cast<DropboxHelper>(shared_from_this());
    GlobalQueue::get(GlobalQueue::Priority::Background).async([weak, linked] {
        const auto answer = linked->accountInfo();
        std::string unreadable;
        const auto account = answer.error ? std::nullopt : dropbox::readAccount(answer.body, unreadable);
        const auto self = weak.lock();
        if (!self || !account) return;
        self->freeSpace_ = static_cast<double>(account->totalBytes - account->consumedBytes) * kMegabytesPerByte;
        SH_LOG("FreeSpace: {}Mb", self->freeSpace_.load());
    });
}

// A first run on an account makes the device directory; otherwise the first upload makes it,
// so that another device's sessions can still be copied to this device's name.
bool DropboxHelper::setupInitialStorageStructure() {
    if (!listDeviceFolders()) return false;
    migrateDeviceDirectory();
    if (availableDeviceBackups().empty()) {
        if (!createFolderAtPath(deviceDirectory())) return false;
        SH_LOG("<{}> created!", deviceDirectory());
    }
    return listHistoryFiles();
}

std::optional<std::vector<dropbox::Entry>> DropboxHelper::listFolder(const std::string& path, bool* missing) {
    const auto linked = linkedService();
    if (!linked) return std::nullopt;
    const auto answer = linked->metadata(path);
    if (missing != nullptr) *missing = answer.status == 404;
    if (answer.error) {
        setErrorMessage(answer.error);
        return std::nullopt;
    }
    std::string refused;
    auto entries = dropbox::readListing(answer.body, path, refused);
    if (!entries) setErrorMessage(refused);
    return entries;
}

// A folder that isn't there yet lists nothing.
bool DropboxHelper::listDeviceFolders() {
    SH_LOG("mainDirectory: {}", mainDirectory_);
    bool missing = false;
    const auto entries = listFolder(mainDirectory_, &missing);
    if (!entries && !missing) return false;
    std::vector<std::string> devices;
    for (const auto& entry : entries.value_or(std::vector<dropbox::Entry>{})) {
        if (entry.isDirectory) devices.push_back(entry.name);
    }
    setAvailableDeviceBackups(std::move(devices));
    setErrorMessage(std::nullopt);
    MainQueue::shared().async(
        [] { NotificationCenter::defaultCenter().post("ALL_DEVICE_DATA_AVAILABLE_FROM_ICLOUD"); });
    return true;
}

// The history files, oldest first: their stamps sort as text in date order. A device
// directory that isn't there yet holds none.
bool DropboxHelper::listHistoryFiles() {
    SH_LOG("Loading data for <{}> @ {}", Supervisor::shared().deviceName(), mainDirectory_);
    bool missing = false;
    const auto entries = listFolder(deviceDirectory(), &missing);
    if (!entries && !missing) return false;
    std::vector<std::string> names;
    for (const auto& entry : entries.value_or(std::vector<dropbox::Entry>{})) {
        if (!entry.isDirectory) names.push_back(entry.name);
    }
    names = StorageLayout::existingFiles(names);
    std::sort(names.begin(), names.end());
    SH_LOG("{} existingFiles", names.size());
    setExistingFiles(std::move(names));
    setErrorMessage(std::nullopt);
    return true;
}

void DropboxHelper::flushCache() {
    setAvailableDeviceBackups({});
    clearExistingFiles();
    setSuccessSelector(nullptr, nullptr);
    if (isLoggedIn()) loadAccountInfos();
}

void DropboxHelper::resetAll() {
    unlink();
    forgetLink();
}

void DropboxHelper::loadAvailableDeviceBackups() { finish(listDeviceFolders()); }

void DropboxHelper::loadDefaultBackupDetails() { finish(listHistoryFiles()); }

void DropboxHelper::loadBackupDetailsForDevice(const std::string& deviceName) {
    SH_LOG("Loading data for <{}>", deviceName);
    if (!isCleanRelativePath(deviceName)) return performFailureSelector();
    const auto entries = listFolder(StorageLayout::deviceDirectory(mainDirectory_, deviceName));
    if (!entries) return performFailureSelector();
    std::vector<std::string> names;
    for (const auto& entry : *entries) {
        if (!entry.isDirectory) names.push_back(entry.name);
    }
    performSuccessSelector(names);
}

}  // namespace stowhaven
