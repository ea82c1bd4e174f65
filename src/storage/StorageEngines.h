#pragma once

#include "storage/StorageHelperProtocol.h"
#include "storage/StorageType.h"

#include <functional>
#include <memory>

namespace stowhaven {

// The one instance of each storage engine. Each engine registers the factory of its type;
// the instance is made when the engine first becomes current, and made anew when asked
// again, in place of the one before. Safe to use from any thread.
class StorageEngines {
public:
    using Factory = std::function<std::shared_ptr<StorageHelperProtocol>()>;

    static void registerFactory(StorageType type, Factory factory);
    // A new instance by the type's factory, kept from now on; nothing without a factory.
    static std::shared_ptr<StorageHelperProtocol> create(StorageType type);
    // The instance kept for the type; nothing before the first create().
    static std::shared_ptr<StorageHelperProtocol> engine(StorageType type);

    // Forgets every factory and instance. For tests only.
    static void removeAllForTesting();
};

}  // namespace stowhaven
