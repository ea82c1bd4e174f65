#include "core/StorageEngineStart.h"

#include "core/Supervisor.h"
#include "platform/Log.h"
#include "platform/Strings.h"
#include "storage/StorageEngineFactory.h"
#include "storage/addressbook/ABAddressBookHelper.h"

#include <chrono>
#include <memory>
#include <thread>

namespace stowhaven {

namespace {

constexpr std::chrono::seconds kInitializationPoll{1};

// An engine that connects in the background is waited for, until it is ready or failed.
void waitForInitialization(const std::shared_ptr<StorageHelperProtocol>& engine) {
    BackgroundInitialization* initialization = answersTo<BackgroundInitialization>(engine);
    if (initialization == nullptr) return;
    while (!initialization->isInitialized() && !engine->errorMessage())
        std::this_thread::sleep_for(kInitializationPoll);
    if (const auto error = engine->errorMessage()) SH_LOG("Connection error: {}", *error);
}

}  // namespace

std::optional<std::string> StorageEngineStart::start() {
    Supervisor& supervisor = Supervisor::shared();
    if (supervisor.isStorageAddressbook()) ABAddressBookHelper::createABAddressBookHelper();
    if (supervisor.isStorageAddressbook()) return std::nullopt;
    const StorageType type = supervisor.currentStorageType();
    const std::string name = supervisor.storageEngineName();
    const auto engine = createStorageEngine(type);
    waitForInitialization(engine);
    if (supervisor.currentStorageType() == type) return std::nullopt;
    // The engine couldn't start and gave way to local storage.
    fallBackToLocalStorage();
    return Strings::format("STORAGE_FALLBACK_MESSAGE", name, engine->errorMessage().value_or(""));
}

void StorageEngineStart::fallBackToLocalStorage() {
    Supervisor& supervisor = Supervisor::shared();
    supervisor.setStorageToLocal();
    if (!supervisor.currentStorageEngine()) createStorageEngine(StorageType::Local);
}

}  // namespace stowhaven
