#include "storage/box/BoxHelper.h"

#include "core/Supervisor.h"
#include "platform/FileNames.h"
#include "platform/Log.h"
#include "platform/Platform.h"
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

BoxHelper::BoxHelper() : CloudStorageHelper(std::make_unique<BoxWrapper>(), StorageType::Box) {}

BoxWrapper& BoxHelper::box() const { return static_cast<BoxWrapper&>(*wrapper()); }

bool BoxHelper::isInitialized() { return box().isInitializationCompleted(); }

bool BoxHelper::start() {
    beginRequest();
    return canStart(box().client().service().problem(), box().client().tokens().hasRefreshToken(), "Box") &&
           box().initializeBaseFolders() && loadListings(true);
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

std::optional<std::string> BoxHelper::logInWithCode(const std::string& code) {
    beginRequest();
    OAuth2Tokens& tokens = box().client().tokens();
    const bool exchanged = tokens.exchangeCode(code);
    return connectAfterLogIn(exchanged, tokens.lastError(),
                             {"BOX_LOGIN_FAIL", "BOX_LOGIN_SUCCESS", "Box refused the login"});
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
    if (loadListings(false)) fetchNewestHistoryFile();
}

bool BoxHelper::fetchHistoryFile(const std::string& name) {
    const auto id = box().idWithName(name, false);
    if (!id) return failWith("Couldn't find backup data FILE with name <" + name + ">");
    return fetch(*id, name).has_value();
}

std::optional<std::string> BoxHelper::fetch(const std::string& id, const std::string& name) {
    const auto path = temporaryPathOf(name);
    if (!path || !box().downloadFileData(id, *path)) return std::nullopt;
    return path;
}
}  // namespace stowhaven
