#pragma once

#include <optional>
#include <string>

namespace stowhaven {

// What the program is to the service: its app key and secret, given by the user (no pair is
// compiled in), and the service's three hosts, each the published one or the one the
// environment names in its place.
struct DropboxApp {
    std::string key;
    std::string secret;
    // "https://api.dropbox.com" and the like, without a trailing slash.
    std::string apiHost;
    std::string contentHost;
    std::string webHost;

    // The app of the environment; none, with the text the user sees in ERROR, when its key or
    // secret is missing or not alphanumeric, or when a host can't be used.
    static std::optional<DropboxApp> fromEnvironment(std::string& error);
};

}  // namespace stowhaven
