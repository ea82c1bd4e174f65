#include "cli/ServerEngines.h"

#include "storage/ftp/FTPHelper.h"
#include "storage/owncloud/OwnCloudHelper.h"

#include <array>

namespace stowhaven {

namespace {

const std::array<ServerEngine, 2> kServerEngines = {{
    {"ftp", StorageType::FTP, &kFTPSettings, true},
    {"owncloud", StorageType::OwnCloud, &kOwnCloudSettings, false},
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
