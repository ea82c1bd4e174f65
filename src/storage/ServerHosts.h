#pragma once

#include "storage/ServerCredentials.h"

#include <string>
#include <vector>

namespace stowhaven {

// The servers of an engine that the user has saved, kept sorted by host regardless of
// case; one entry per host.
class ServerHosts {
public:
    static std::vector<ServerCredentials> load(const ServerSettings& settings);
    // Saves the host, in place of an entry of the same host.
    static void save(const ServerSettings& settings, const ServerCredentials& host);
    // Removes the entry of that host; false when there is none.
    static bool forget(const ServerSettings& settings, const std::string& host);
};

}  // namespace stowhaven
