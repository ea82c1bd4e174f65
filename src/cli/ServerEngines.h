#pragma once

#include "storage/ServerCredentials.h"
#include "storage/StorageType.h"

#include <optional>
#include <span>
#include <string>

namespace stowhaven {

// The engines that log in to a server of the user's, by their names on the command line.
struct ServerEngine {
    const char* name;
    StorageType type;
    const ServerSettings* settings;
    // FTP alone takes a host with a port and a mode of its own; a WebDAV share is a URL,
    // which carries its port.
    bool takesPortAndMode;
};

std::span<const ServerEngine> serverEngines();
const ServerEngine* serverEngineOfType(StorageType type);

}  // namespace stowhaven
