#pragma once

#include "net/FtpClient.h"
#include "platform/plist/PlistValue.h"

#include <optional>
#include <string>

namespace stowhaven {

// An FTP server the user keeps sessions on: where it is, who logs in, and the program's
// folder there. The current one lives in the settings ("FTPHost", "FTPPort", "FTPPassive",
// "FTPLogin", "FTPPassword", "FTPRootDirectory"); the saved ones in "FTPHosts".
struct FTPCredentials {
    std::string host;
    // Kept as text, as the settings keep it; blank means 21.
    std::string port;
    std::string login;
    std::string password;
    std::string rootDirectory;
    bool passive = true;

    static constexpr const char* kDefaultPort = "21";

    // The current connection's, as the settings hold it.
    static FTPCredentials current();
    // Makes these the current connection's.
    void storeAsCurrent() const;
    // Forgets the current connection's.
    static void clearCurrent();

    // The program's folder from what the user typed: trimmed, "/Stowhaven" when blank,
    // "Stowhaven" appended unless it is the last folder already, absolute.
    static std::string normalizedRootDirectory(const std::string& typed);
    // The root made normal and a blank port made 21.
    FTPCredentials normalized() const;

    // The localised text of the first of host, login and password that is missing; nothing
    // when all three are there.
    std::optional<std::string> missingPart() const;

    // <root>/<device name>.
    std::string homeDirectory(const std::string& deviceName) const;
    // What the client needs; a port that is no number in 1...65535 is none.
    std::optional<FtpAccount> account() const;
    // "ftp://login@host:port/root", without the password.
    std::string description() const;

    // One entry of "FTPHosts", and back; nothing for an entry that isn't one.
    PlistValue::Dictionary savedHostEntry() const;
    static std::optional<FTPCredentials> fromSavedHostEntry(const PlistValue& entry);
};

}  // namespace stowhaven
