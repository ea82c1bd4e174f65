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
    // What the host is called: "HOST" for FTP, "URL" for a WebDAV share.
    const char* hostWord;
    // FTP alone takes a port and a mode of its own; a URL carries its port.
    bool takesPortAndMode;
};

std::span<const ServerEngine> serverEngines();
const ServerEngine* serverEngineOfType(StorageType type);

}  // namespace stowhaven
