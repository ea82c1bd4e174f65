#include "storage/ServerLogin.h"

#include "core/Supervisor.h"
#include "platform/AsciiCase.h"
#include "storage/ServerHosts.h"
#include "storage/StorageEngineFactory.h"
#include "storage/StorageEngines.h"

namespace stowhaven {

std::optional<std::string> ServerLogin::logIn(StorageType type, const ServerSettings& settings,
                                              const ServerCredentials& typed) {
    const ServerCredentials host = typed.normalized(settings);
    if (const auto missing = host.missingPart(settings)) return missing;

    Supervisor& supervisor = Supervisor::shared();
    const StorageType before = supervisor.currentStorageType();
    const ServerCredentials current = ServerCredentials::current(settings);
    host.storeAsCurrent(settings);
    supervisor.setStorageTo(type);
    // The engine proves the host as it starts, and gives way to local storage when it can't.
    const auto engine = createStorageEngine(type);
    if (supervisor.currentStorageType() != type) {
        const std::string error = engine ? engine->errorMessage().value_or("The server can't be used") : "";
        current.storeAsCurrent(settings);
        supervisor.setCurrentStorageType(before);
        if (!supervisor.currentStorageEngine()) createStorageEngine(before);
        return error;
    }
    ServerHosts::save(settings, host);
    supervisor.persistStorageType();
    return std::nullopt;
}

void ServerLogin::logOut(StorageType type) {
    if (const auto engine = StorageEngines::engine(type)) {
        if (auto* connection = dynamic_cast<ConnectionOrientedStorageHelperProtocol*>(engine.get())) {
            connection->disconnect();
        }
    }
    Supervisor& supervisor = Supervisor::shared();
    supervisor.setStorageToLocal();
    if (!supervisor.currentStorageEngine()) createStorageEngine(StorageType::Local);
    supervisor.persistStorageType();
}

bool ServerLogin::forget(StorageType type, const ServerSettings& settings, const std::string& host) {
    const bool wasCurrent = equalsIgnoringAsciiCase(ServerCredentials::current(settings).host, host);
    if (!ServerHosts::forget(settings, host)) return false;
    if (wasCurrent) {
        if (Supervisor::shared().currentStorageType() == type) logOut(type);
        ServerCredentials{}.storeAsCurrent(settings);
    }
    return true;
}

}  // namespace stowhaven
