#include "storage/StorageEngines.h"

#include <map>
#include <mutex>

namespace stowhaven {

namespace {

std::mutex gMutex;
std::map<StorageType, StorageEngines::Factory> gFactories;
std::map<StorageType, std::shared_ptr<StorageHelperProtocol>> gEngines;

}  // namespace

void StorageEngines::registerFactory(StorageType type, Factory factory) {
    std::lock_guard lock(gMutex);
    gFactories[type] = std::move(factory);
}

std::shared_ptr<StorageHelperProtocol> StorageEngines::create(StorageType type) {
    Factory factory;
    {
        std::lock_guard lock(gMutex);
        const auto entry = gFactories.find(type);
        if (entry == gFactories.end()) return nullptr;
        factory = entry->second;
    }
    // Outside the lock: an engine may look at the others while it starts.
    std::shared_ptr<StorageHelperProtocol> engine = factory();
    std::lock_guard lock(gMutex);
    gEngines[type] = engine;
    return engine;
}

std::shared_ptr<StorageHelperProtocol> StorageEngines::engine(StorageType type) {
    std::lock_guard lock(gMutex);
    const auto entry = gEngines.find(type);
    return entry == gEngines.end() ? nullptr : entry->second;
}

void StorageEngines::removeAllForTesting() {
    std::lock_guard lock(gMutex);
    gFactories.clear();
    gEngines.clear();
}

}  // namespace stowhaven
