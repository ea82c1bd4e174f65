#include "storage/StorageEngineFactory.h"

#include "storage/StorageEngines.h"
#include "storage/ftp/FTPHelper.h"
#include "storage/local/LocalStorageHelper.h"
#include "storage/owncloud/OwnCloudHelper.h"

namespace stowhaven {

std::shared_ptr<StorageHelperProtocol> createStorageEngine(StorageType type) {
    switch (type) {
        case StorageType::Addressbook:
        case StorageType::Dropbox:
        case StorageType::SugarSync:
        case StorageType::SkyDrive:
        case StorageType::Box:
        case StorageType::GDrive:
            // Made by the factory its engine registered, if any.
            return StorageEngines::create(type);
        case StorageType::FTP:
        case StorageType::OwnCloud:
            // A factory registered in its place (a test's) goes first.
            if (auto engine = StorageEngines::create(type)) return engine;
            if (type == StorageType::FTP) return FTPHelper::createFTPHelper();
            return OwnCloudHelper::createOwnCloudHelper();
        case StorageType::Local:
            break;
    }
    return LocalStorageHelper::createLocalStorageHelper();
}

}  // namespace stowhaven
