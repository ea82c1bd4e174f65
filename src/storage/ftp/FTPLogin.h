#pragma once

#include "storage/ftp/FTPCredentials.h"

#include <optional>
#include <string>

namespace stowhaven {

// Making an FTP server the storage, as the login screen does: the host is proved (the login
// taken, the root and the device's folder found or made), saved among the hosts, and made
// the current connection and engine, kept so. Nothing changes when it can't be proved.
class FTPLogin {
public:
    // Nothing on success; otherwise what went wrong, in the server's words.
    static std::optional<std::string> logIn(const FTPCredentials& host);
    // Ends the connection and goes back to local storage, kept so; the hosts stay saved.
    static void logOut();
};

}  // namespace stowhaven
