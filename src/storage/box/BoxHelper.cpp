#include "storage/box/BoxHelper.h"

#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/FileNames.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/TemporaryDirectory.h"
#include "platform/dispatch/NotificationCenter.h"
#include "storage/StorageEngines.h"
#include "storage/box/BoxWrapper.h"

#include <algorithm>

namespace stowhaven {

std::shared_ptr<BoxHelper> BoxHelper::createBoxHelper() {
    StorageEngines::registerFactory(StorageType::Box, [] {
        auto helper = std::make_shared<BoxHelper>();
        SH_LOG("BoxHelper created!");
        helper->observeOperationCanceled();
        if (Supervisor::shared().isStorageBox()) helper->connect();
        return helper;
    });
    return std::dynamic_pointer_cast<BoxHelper>(StorageEngines::create(StorageType::Box));
}

void BoxHelper::unlink() { BoxWrapper::unlink(); }

BoxHelper::BoxHelper() : AbstractStorageHelper(std::make_unique<BoxWrapper>()) {}

BoxWrapper& BoxHelper::box() const { return static_cast<BoxWrapper&>(*wrapper()); }

bool BoxHelper::isInitialized() { return box().isInitializationCompleted(); }

void BoxHelper::beginRequest() { box().setErrorMessage(std::nullopt); }

void BoxHelper::finish(bool succeeded, const HookObject& object) {
    if (succeeded) {
        performSuccessSelector(object);
    } else {
        performFailureSelector();
    }
}

bool BoxHelper::failWith(const std::string& message) {
    SH_LOG("{}", message);
    box().setErrorMessage(message);
    return false;
}

bool BoxHelper::start() {
    beginRequest();
    if (const auto problem = box().client().service().problem()) return failWith(*problem);
    if (!Platform::current().reachability().isConnectedToNetwork()) return failWith("No network!");
    if (!box().client().tokens().hasRefreshToken()) {
        SH_LOG("User may not be signed in!");
        return failWith("No Box account is linked");
    }
    return box().initializeBaseFolders() && loadListings(true);
}

// The history files oldest first: their stamps sort as text in date order. The lists in hand
// stay until the new ones are read, as a job may be reading them.
bool BoxHelper::loadListings(bool forgettingDamagedFiles) {
    const auto devices = box().availableDeviceBackups();
    auto files = devices ? box().existingFiles() : std::nullopt;
    if (!files) return false;
    std::sort(files->begin(), files->end());
    setAvailableDeviceBackups(*devices);
    if (forgettingDamagedFiles) {
        replaceExistingFiles(std::move(*files));
    } else {
        setExistingFiles(std::move(*files));
    }
    return true;
}

void BoxHelper::fallBackToLocalStorage() {
    SH_LOG("errorMessage:{}", errorMessage().value_or("(null)"));
    Supervisor& supervisor = Supervisor::shared();
    if (supervisor.isStorageBox()) supervisor.setStorageToLocal();
}

void BoxHelper::connect() {
    if (!start()) {
        fallBackToLocalStorage();
        return;
    }
    Supervisor::shared().setStorageToBox();
}

// Only a login tells the screens, which then read the storage anew; a start doesn't.
std::optional<std::string> BoxHelper::logInWithCode(const std::string& code) {
    beginRequest();
    if (!box().client().tokens().exchangeCode(code)) {
        NotificationCenter::defaultCenter().post("BOX_LOGIN_FAIL");
        return box().client().tokens().lastError().value_or("Box refused the login");
    }
    connect();
    const auto error = errorMessage();
    NotificationCenter::defaultCenter().post(error ? "BOX_LOGIN_FAIL" : "BOX_LOGIN_SUCCESS");
    return error;
}

void BoxHelper::disconnect() {
    box().removeTokens();
    clearExistingFiles();
    setAvailableDeviceBackups({});
    Supervisor::shared().setStorageToLocal();
    NotificationCenter::defaultCenter().post("BOX_LOGOUT");
    SH_LOG("Disconnected!");
}

bool BoxHelper::isLoggedIn() { return Platform::current().reachability().isConnectedToNetwork() && box().isLoggedIn(); }

std::string BoxHelper::accountName() { return box().userName(); }

void BoxHelper::flushCache() {
    if (!start()) fallBackToLocalStorage();
}

void BoxHelper::resetAll() { unlink(); }

double BoxHelper::freeSpace() { return box().freeSpace(); }

void BoxHelper::refreshFreeSpace() { box().getAccountInfos(); }

void BoxHelper::loadAvailableDeviceBackups() {
    beginRequest();
    SH_LOG("Reloading available device backups...");
    const auto devices = box().availableDeviceBackups();
    if (devices) setAvailableDeviceBackups(*devices);
    finish(devices.has_value());
}

void BoxHelper::loadBackupDetailsForDevice(const std::string& deviceName) {
    beginRequest();
    const auto id = isOneFileName(deviceName) ? box().folderIdForDevice(deviceName) : std::nullopt;
    if (!id) {
        SH_LOG("Couldn't find data for <{}>", deviceName);
        if (!hasError()) box().setErrorMessage("Couldn't find data for <" + deviceName + ">");
        return performFailureSelector();
    }
    auto files = box().getDeviceBackupData(*id);
    if (files) std::sort(files->begin(), files->end());
    finish(files.has_value(), files ? HookObject(std::move(*files)) : HookObject());
}

void BoxHelper::loadMostRecentBackupSession() {
    beginRequest();
    if (!loadListings(false)) return;
    const std::vector<std::string> files = existingFiles();
    SH_LOG("{} existingFiles: {}", files.size(), textutil::joined(files, ", "));
    if (files.empty()) {
        SH_LOG("No existing data files!");
        return;
    }
    const std::string& newest = files.back();
    if (!fetchHistoryFile(newest)) return;
    SH_LOG("Latest backup data in <{}>", newest);
}

bool BoxHelper::fetchHistoryFile(const std::string& name) {
    const auto id = box().idWithName(name, false);
    if (!id) return failWith("Couldn't find backup data FILE with name <" + name + ">");
    return fetch(*id, name).has_value();
}

std::optional<std::string> BoxHelper::fetch(const std::string& id, const std::string& name) {
    if (!isOneFileName(name)) {
        failWith("<" + name + "> names no file");
        return std::nullopt;
    }
    const std::string path = TemporaryDirectory::path() + "/" + name;
    if (!box().downloadFileData(id, path)) return std::nullopt;
    return path;
}

void BoxHelper::retrieveRestOfBackupHistory() {
    // The walk posts "BACKUP_HISTORY_LOADED" itself; without one it is posted all the same.
    if (!fBackupHistoryLoaded_.exchange(true) && !existingFiles().empty()) {
        AbstractStorageHelper::retrieveRestOfBackupHistory();
        return;
    }
    NotificationCenter::defaultCenter().post("BACKUP_HISTORY_LOADED");
}

}  // namespace stowhaven
