#include "cli/CatalogueLoad.h"

#include "core/AlertPresenter.h"
#include "core/CydiaFileManager.h"
#include "core/StorageEngineStart.h"
#include "items/ArchivableFolders.h"
#include "platform/Strings.h"
#include "platform/dispatch/GlobalQueue.h"
#include "platform/dispatch/MainQueue.h"

#include <atomic>
#include <chrono>
#include <memory>

namespace stowhaven {

namespace {

// No load takes this long; a load that does is left to end with the program.
constexpr std::chrono::hours kLoadTimeout{1};

}  // namespace

void startStorageEngine() {
    if (const auto fallback = StorageEngineStart::start()) {
        AlertPresenter::shared()->showAlert(Strings::localized("WARNING"), *fallback, {Strings::localized("OK_BUTTON")},
                                            {});
    }
}

void loadCatalogue() {
    startStorageEngine();
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
}

}  // namespace stowhaven
