#include "storage/ftp/FTPLogin.h"

#include "core/Supervisor.h"
#include "storage/StorageEngineFactory.h"
#include "storage/StorageEngines.h"
#include "storage/ftp/FTPHelper.h"
#include "storage/ftp/FTPHosts.h"

namespace stowhaven {

std::optional<std::string> FTPLogin::logIn(const FTPCredentials& typed) {
    const FTPCredentials host = typed.normalized();
    if (const auto missing = host.missingPart()) return missing;
    if (!host.account()) return "The port of the FTP server must be a number from 1 to 65535.";

    Supervisor& supervisor = Supervisor::shared();
    const StorageType before = supervisor.currentStorageType();
    const FTPCredentials current = FTPCredentials::current();
    host.storeAsCurrent();
    supervisor.setStorageToFTP();
    // The engine proves the host as it starts, and gives way to local storage when it can't.
    const auto engine = FTPHelper::createFTPHelper();
    if (!supervisor.isStorageFTP()) {
        const std::string error = engine->errorMessage().value_or("The FTP server can't be used");
        current.storeAsCurrent();
        supervisor.setCurrentStorageType(before);
        if (!supervisor.currentStorageEngine()) createStorageEngine(before);
        return error;
    }
    FTPHosts::save(host);
    supervisor.persistStorageType();
    return std::nullopt;
}

void FTPLogin::logOut() {
    if (const auto engine = std::dynamic_pointer_cast<FTPHelper>(StorageEngines::engine(StorageType::FTP))) {
        engine->disconnect();
    }
    Supervisor& supervisor = Supervisor::shared();
    supervisor.setStorageToLocal();
    if (!supervisor.currentStorageEngine()) createStorageEngine(StorageType::Local);
    supervisor.persistStorageType();
}

}  // namespace stowhaven
