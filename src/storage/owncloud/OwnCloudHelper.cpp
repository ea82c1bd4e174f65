#include "storage/owncloud/OwnCloudHelper.h"

#include "core/Supervisor.h"
#include "platform/Log.h"
#include "storage/StorageEngines.h"
#include "storage/owncloud/OwnCloudWrapper.h"

#include <algorithm>

namespace stowhaven {

const ServerSettings kOwnCloudSettings{"OwnCloudHost",
                                       nullptr,
                                       nullptr,
                                       "OwnCloudLogin",
                                       "OwnCloudPassword",
                                       "OwnCloudRootDirectory",
                                       "OwnCloudHosts",
                                       "/owncloud/remote.php/webdav/Stowhaven",
                                       "INVALID_HOST",
                                       "INVALID_LOGIN",
                                       "INVALID_PASSWORD"};

std::shared_ptr<OwnCloudHelper> OwnCloudHelper::createOwnCloudHelper() {
    StorageEngines::registerFactory(StorageType::OwnCloud, [] {
        auto helper = std::make_shared<OwnCloudHelper>(ServerCredentials::current(kOwnCloudSettings));
        SH_LOG("OwnCloudHelper created!");
        if (Supervisor::shared().isStorageOwnCloud()) helper->connect();
        return helper;
    });
    return std::dynamic_pointer_cast<OwnCloudHelper>(StorageEngines::create(StorageType::OwnCloud));
}

OwnCloudHelper::OwnCloudHelper(const ServerCredentials& credentials)
    : RemoteFolderStorageHelper(StorageType::OwnCloud,
                                std::make_unique<OwnCloudWrapper>(credentials.normalized(kOwnCloudSettings))) {}

const ServerCredentials& OwnCloudHelper::credentials() const {
    return static_cast<OwnCloudWrapper&>(server()).credentials();
}

std::string OwnCloudHelper::rootDirectory() const { return credentials().rootDirectory; }

std::optional<std::string> OwnCloudHelper::missingCredentials() const {
    return credentials().missingPart(kOwnCloudSettings);
}

std::string OwnCloudHelper::accountName() { return credentials().host + credentials().rootDirectory; }

void OwnCloudHelper::takeDeviceFolders() {
    const Supervisor& supervisor = Supervisor::shared();
    std::vector<std::string> devices = availableDeviceBackups();
    if (std::erase(devices, supervisor.deviceUID()) == 0) return;
    SH_LOG("SHOULD manually migrate from data directory from <{}> to <{}>...", supervisor.deviceUID(),
           supervisor.deviceName());
    setAvailableDeviceBackups(std::move(devices));
}

}  // namespace stowhaven
