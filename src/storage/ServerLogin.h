#pragma once

#include "storage/ServerCredentials.h"
#include "storage/StorageType.h"

#include <optional>
#include <string>

namespace stowhaven {

// Making a server the storage, as the engines' host screens do: the host is proved (the
// login taken, the root and the device's folder found or made, as the engine does when it
// starts), saved among the engine's hosts, and made the current connection and engine,
// kept so. Nothing changes when it can't be proved.
class ServerLogin {
public:
    // Nothing on success; otherwise what went wrong, in the server's words.
    static std::optional<std::string> logIn(StorageType type, const ServerSettings& settings,
                                            const ServerCredentials& host);
    // Ends the engine's connection and goes back to local storage, kept so; the hosts stay.
    static void logOut(StorageType type);
    // Forgets a saved host; when it is the current one, its password goes from the current
    // connection too and local storage takes its place. False when there is no such host.
    static bool forget(StorageType type, const ServerSettings& settings, const std::string& host);
};

}  // namespace stowhaven
