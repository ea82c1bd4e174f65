#include "cli/CatalogueLoad.h"

#include "core/CydiaFileManager.h"
#include "core/Supervisor.h"
#include "items/ArchivableFolders.h"
#include "platform/dispatch/GlobalQueue.h"
#include "platform/dispatch/MainQueue.h"
#include "storage/StorageEngineFactory.h"
#include "storage/addressbook/ABAddressBookHelper.h"

#include <atomic>
#include <chrono>
#include <memory>

namespace stowhaven {

namespace {

// No load takes this long; a load that does is left to end with the program.
constexpr std::chrono::hours kLoadTimeout{1};

}  // namespace

bool loadCatalogue() {
    Supervisor& supervisor = Supervisor::shared();
    // The address book is no engine of the storage contract; without access storage falls to
    // local, and the local engine is made.
    if (supervisor.isStorageAddressbook()) ABAddressBookHelper::createABAddressBookHelper();
    if (!supervisor.isStorageAddressbook() && !createStorageEngine(supervisor.currentStorageType())) return false;
    CydiaFileManager& catalogue = CydiaFileManager::shared();
    catalogue.resetAllData();
    const auto done = std::make_shared<std::atomic<bool>>(false);
    GlobalQueue::get(GlobalQueue::Priority::Default).async([&catalogue, done] {
        catalogue.loadPackages();
        *done = true;
    });
    MainQueue::shared().runUntil([done] { return done->load(); }, kLoadTimeout);
    // As the main screen does once the first load is in.
    ArchivableFolders::resetFolder();
    return true;
}

}  // namespace stowhaven
