#include "cli/ServerEngines.h"

#include "storage/ftp/FTPHelper.h"

#include <array>

namespace stowhaven {

namespace {

const std::array<ServerEngine, 1> kServerEngines = {{
    {"ftp", StorageType::FTP, &kFTPSettings, "HOST", true},
}};

}  // namespace

std::span<const ServerEngine> serverEngines() { return kServerEngines; }

const ServerEngine* serverEngineOfType(StorageType type) {
    for (const ServerEngine& engine : kServerEngines) {
        if (engine.type == type) return &engine;
    }
    return nullptr;
}

}  // namespace stowhaven
