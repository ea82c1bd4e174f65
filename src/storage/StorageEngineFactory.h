#pragma once

#include "storage/StorageHelperProtocol.h"
#include "storage/StorageType.h"

#include <memory>

namespace stowhaven {

// Makes the engine of a storage type by its class-level factory, as the program does when
// an engine first becomes current; an unknown type makes the local engine. Nothing for an
// engine that has registered no factory.
std::shared_ptr<StorageHelperProtocol> createStorageEngine(StorageType type);

}  // namespace stowhaven
