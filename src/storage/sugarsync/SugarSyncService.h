#pragma once

#include "net/ServiceBase.h"

#include <optional>
#include <string>

namespace stowhaven {

// Where SugarSync is for this run: its API host, replaceable from the environment, and the
// app's access key and private key, which only the environment gives (none is compiled in).
// Everything but the login and the user record is reached through references the service
// hands out; the engine follows only those on the API host's own scheme, host and port,
// since the account's token goes with every request.
struct SugarSyncService {
    ServiceBase api;
    std::optional<std::string> accessKey;
    std::optional<std::string> privateKey;

    static SugarSyncService fromEnvironment();

    // Why the engine can't talk to SugarSync at all (a key missing, a bad host), or none.
    std::optional<std::string> problem() const;

    std::string url(const std::string& path) const { return api.url + path; }
    // Whether REFERENCE is an address on the API host itself: its scheme, host and port, a
    // path after them, and nothing but printable characters.
    bool isOwnReference(const std::string& reference) const;
};

}  // namespace stowhaven
