#include "storage/ftp/FTPHelper.h"

#include "core/Supervisor.h"
#include "storage/StorageEngines.h"
#include "storage/ftp/FTPWrapper.h"

namespace stowhaven {

const ServerSettings kFTPSettings{
    "FTPHost",  "FTPPort",    "FTPPassive",       "FTPLogin",          "FTPPassword",         "FTPRootDirectory",
    "FTPHosts", "/Stowhaven", "FTP_INVALID_HOST", "FTP_INVALID_LOGIN", "FTP_INVALID_PASSWORD"};

std::shared_ptr<FTPHelper> FTPHelper::createFTPHelper() {
    StorageEngines::registerFactory(StorageType::FTP, [] {
        auto helper = std::make_shared<FTPHelper>(ServerCredentials::current(kFTPSettings));
        if (Supervisor::shared().isStorageFTP()) helper->connect();
        return helper;
    });
    return std::dynamic_pointer_cast<FTPHelper>(StorageEngines::create(StorageType::FTP));
}

FTPHelper::FTPHelper(const ServerCredentials& credentials)
    : RemoteFolderStorageHelper(StorageType::FTP, std::make_unique<FTPWrapper>(credentials.normalized(kFTPSettings))) {}

const ServerCredentials& FTPHelper::credentials() const { return static_cast<FTPWrapper&>(server()).credentials(); }

std::string FTPHelper::rootDirectory() const { return credentials().rootDirectory; }

std::optional<std::string> FTPHelper::missingCredentials() const { return credentials().missingPart(kFTPSettings); }

std::string FTPHelper::accountName() { return "ftp://" + credentials().host; }

}  // namespace stowhaven
