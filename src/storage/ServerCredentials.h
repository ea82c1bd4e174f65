#pragma once

#include "platform/plist/PlistValue.h"

#include <optional>
#include <string>

namespace stowhaven {

// Where an engine that logs in to a server of the user's keeps its current connection and
// its saved hosts in the settings, and what it takes by default.
struct ServerSettings {
    const char* hostKey;
    // None for an engine whose host carries its port.
    const char* portKey;
    const char* passiveKey;
    const char* loginKey;
    const char* passwordKey;
    const char* rootDirectoryKey;
    const char* savedHostsKey;
    // The root when none is given; its last folder is the program's own.
    const char* defaultRootDirectory;
    // The localised texts of a missing host, login and password.
    const char* missingHostText;
    const char* missingLoginText;
    const char* missingPasswordText;
};

// A server the user keeps sessions on: where it is, who logs in, and the program's folder
// there.
struct ServerCredentials {
    std::string host;
    // Kept as text, as the settings keep it; blank means the protocol's own.
    std::string port;
    std::string login;
    std::string password;
    std::string rootDirectory;
    bool passive = true;

    // The current connection's, as the settings hold it.
    static ServerCredentials current(const ServerSettings& settings);
    // Makes these the current connection's.
    void storeAsCurrent(const ServerSettings& settings) const;

    // The program's folder from what the user typed: trimmed, the default when blank,
    // "Stowhaven" appended unless it is the last folder already, absolute.
    static std::string normalizedRootDirectory(const std::string& typed, const std::string& defaultRoot);
    // Trimmed, the root made normal.
    ServerCredentials normalized(const ServerSettings& settings) const;
    // The localised text of the first of host, login and password that is missing; nothing
    // when all three are there.
    std::optional<std::string> missingPart(const ServerSettings& settings) const;

    // One entry of the saved hosts, and back; nothing for an entry that isn't one.
    PlistValue::Dictionary savedHostEntry(const ServerSettings& settings) const;
    static std::optional<ServerCredentials> fromSavedHostEntry(const PlistValue& entry);
};

}  // namespace stowhaven
