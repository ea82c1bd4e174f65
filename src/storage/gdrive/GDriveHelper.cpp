#include "storage/gdrive/GDriveHelper.h"

#include "core/Supervisor.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/TemporaryDirectory.h"
#include "platform/dispatch/NotificationCenter.h"
#include "storage/StorageEngines.h"
#include "storage/gdrive/GDriveWrapper.h"

namespace stowhaven {

namespace {

// What freeSpace answers when the quota can't be read: no backup is kept from trying.
constexpr double kUnknownFreeSpace = 9.223372036854776e+18;

}  // namespace

std::shared_ptr<GDriveHelper> GDriveHelper::createGDriveHelper() {
    StorageEngines::registerFactory(StorageType::GDrive, [] {
        auto helper = std::make_shared<GDriveHelper>();
        SH_LOG("GDriveHelper created!");
        helper->observeOperationCanceled();
        if (Supervisor::shared().isStorageGDrive()) helper->connect();
        return helper;
    });
    return std::dynamic_pointer_cast<GDriveHelper>(StorageEngines::create(StorageType::GDrive));
}

void GDriveHelper::unlink() { GDriveWrapper::unlink(); }

GDriveHelper::GDriveHelper() : CloudStorageHelper(std::make_unique<GDriveWrapper>(), StorageType::GDrive) {}

GDriveWrapper& GDriveHelper::drive() const { return static_cast<GDriveWrapper&>(*wrapper()); }

bool GDriveHelper::isInitialized() { return drive().isInitialized(); }

bool GDriveHelper::start() {
    beginRequest();
    return canStart(drive().client().service().problem(), GDriveTokens::storedRefreshToken().has_value(),
                    "Google Drive") &&
           drive().flushCache() && loadListings();
}

bool GDriveHelper::loadListings() {
    const auto devices = drive().loadAvailableDeviceBackups();
    auto files = devices ? drive().loadCurrentDeviceBackups() : std::nullopt;
    if (!files) return false;
    setAvailableDeviceBackups(*devices);
    replaceExistingFiles(std::move(*files));
    return true;
}

std::optional<std::string> GDriveHelper::logInWithCode(const std::string& code, const std::string& verifier) {
    beginRequest();
    OAuth2Tokens& tokens = drive().client().tokens();
    const bool exchanged = tokens.exchangeCode(code, GDriveTokens::codeExchangeForm(verifier));
    return connectAfterLogIn(exchanged, tokens.lastError(),
                             {"GDRIVE_DISCONNECTED", "GDRIVE_CONNECTED", "Google Drive refused the login"});
}

void GDriveHelper::disconnect() {
    drive().disconnect();
    clearExistingFiles();
    setAvailableDeviceBackups({});
    Supervisor::shared().setStorageToLocal();
    NotificationCenter::defaultCenter().post("GDRIVE_DISCONNECTED");
}

bool GDriveHelper::isLoggedIn() {
    return Platform::current().reachability().isConnectedToNetwork() && drive().isLoggedIn();
}

std::string GDriveHelper::accountName() { return drive().username(); }

void GDriveHelper::resetAll() {
    flushCache();
    freeSpace();
}

double GDriveHelper::freeSpace() {
    if (const auto error = errorMessage()) {
        Supervisor::showAlert("Error", *error);
        return kUnknownFreeSpace;
    }
    return drive().freeSpace();
}

void GDriveHelper::refreshFreeSpace() {
    beginRequest();
    drive().refreshFreeSpace();
}

void GDriveHelper::loadAvailableDeviceBackups() {
    beginRequest();
    SH_LOG("Reloading available device backups...");
    const auto devices = drive().loadAvailableDeviceBackups();
    if (devices) setAvailableDeviceBackups(*devices);
    finish(devices.has_value());
}

void GDriveHelper::loadBackupDetailsForDevice(const std::string& deviceName) {
    beginRequest();
    auto files = drive().loadAvailableDeviceBackups() ? drive().getDeviceBackupData(deviceName) : std::nullopt;
    finish(files.has_value(), files ? HookObject(std::move(*files)) : HookObject());
}

void GDriveHelper::loadMostRecentBackupSession() {
    beginRequest();
    if (!loadListings()) return;
    const std::vector<std::string> files = existingFiles();
    if (files.empty()) {
        SH_LOG("No existing data files!");
        return;
    }
    SH_LOG("Loading <{}> into <{}>...", files.back(), TemporaryDirectory::path());
    fetchHistoryFile(files.back());
}

bool GDriveHelper::fetchHistoryFile(const std::string& name) {
    const auto path = temporaryPathOf(name);
    return path && drive().getFile(name, std::nullopt, *path);
}
}  // namespace stowhaven
