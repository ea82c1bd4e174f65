#include "storage/StorageEngineFactory.h"

#include "storage/StorageEngines.h"
#include "storage/box/BoxHelper.h"
#include "storage/dropbox/DropboxHelper.h"
#include "storage/ftp/FTPHelper.h"
#include "storage/gdrive/GDriveHelper.h"
#include "storage/local/LocalStorageHelper.h"
#include "storage/onedrive/SkyDriveHelper.h"
#include "storage/owncloud/OwnCloudHelper.h"
#include "storage/sugarsync/SugarSyncHelper.h"

namespace stowhaven {

namespace {

// The network engines this build makes itself.
std::shared_ptr<StorageHelperProtocol> builtInEngine(StorageType type) {
    switch (type) {
        case StorageType::Dropbox:
            return DropboxHelper::createDropboxHelper();
        case StorageType::Box:
            return BoxHelper::createBoxHelper();
        case StorageType::FTP:
            return FTPHelper::createFTPHelper();
        case StorageType::GDrive:
            return GDriveHelper::createGDriveHelper();
        case StorageType::SkyDrive:
            return SkyDriveHelper::createSkyDriveHelper();
        case StorageType::SugarSync:
            return SugarSyncHelper::createSugarSyncHelper();
        default:
            return OwnCloudHelper::createOwnCloudHelper();
    }
}

}  // namespace

std::shared_ptr<StorageHelperProtocol> createStorageEngine(StorageType type) {
    switch (type) {
        case StorageType::Addressbook:
            // The address book is no engine of the storage contract: a test's factory, if any.
            return StorageEngines::create(type);
        case StorageType::Dropbox:
        case StorageType::Box:
        case StorageType::GDrive:
        case StorageType::SkyDrive:
        case StorageType::SugarSync:
        case StorageType::FTP:
        case StorageType::OwnCloud:
            // A factory registered in its place (a test's) goes first.
            if (auto engine = StorageEngines::create(type)) return engine;
            return builtInEngine(type);
        case StorageType::Local:
            break;
    }
    return LocalStorageHelper::createLocalStorageHelper();
}

}  // namespace stowhaven
