#pragma once

#include "storage/ftp/FTPCredentials.h"

#include <string>
#include <vector>

namespace stowhaven {

// The FTP servers the user has saved ("FTPHosts"), kept sorted by host regardless of case;
// one entry per host.
class FTPHosts {
public:
    static std::vector<FTPCredentials> load();
    // Saves the host, in place of an entry of the same host.
    static void save(const FTPCredentials& host);
    // Removes the entry of that host; false when there is none.
    static bool forget(const std::string& host);
};

}  // namespace stowhaven
