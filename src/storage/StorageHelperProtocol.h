#pragma once

#include <cstdint>

namespace stowhaven {

// What every storage engine offers the rest of the system.
class StorageHelperProtocol {
public:
    virtual ~StorageHelperProtocol() = default;

    // Drops the listings, so that the next use reads the storage again.
    virtual void flushCache() = 0;
    // The room left on the storage as the engine reports it; the unit is the engine's own
    // (megabytes for most).
    virtual double freeSpace() = 0;
    // The largest file the engine takes, in megabytes.
    virtual std::int32_t fileSizeUploadLimit() = 0;
};

}  // namespace stowhaven
