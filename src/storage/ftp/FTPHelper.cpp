#include "storage/ftp/FTPHelper.h"

#include "core/Supervisor.h"
#include "storage/StorageEngines.h"
#include "storage/ftp/FTPWrapper.h"

namespace stowhaven {

std::shared_ptr<FTPHelper> FTPHelper::createFTPHelper() {
    StorageEngines::registerFactory(StorageType::FTP, [] {
        auto helper = std::make_shared<FTPHelper>(FTPCredentials::current());
        if (Supervisor::shared().isStorageFTP()) helper->connect();
        return helper;
    });
    return std::dynamic_pointer_cast<FTPHelper>(StorageEngines::create(StorageType::FTP));
}

FTPHelper::FTPHelper(const FTPCredentials& credentials)
    : RemoteFolderStorageHelper(StorageType::FTP, std::make_unique<FTPWrapper>(credentials.normalized())) {}

const FTPCredentials& FTPHelper::credentials() const { return static_cast<FTPWrapper&>(server()).credentials(); }

std::string FTPHelper::rootDirectory() const { return credentials().rootDirectory; }

std::optional<std::string> FTPHelper::missingCredentials() const { return credentials().missingPart(); }

std::string FTPHelper::accountName() { return "ftp://" + credentials().host; }

}  // namespace stowhaven
