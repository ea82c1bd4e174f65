#pragma once

#include "support/EmulatorProcess.h"
#include "support/ServiceVariables.h"
#include "support/TestFolder.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace stowhaven::test {

// A credential of the app registration made up for an emulator: the emulator's option that
// takes it ("--client-id"), the variable that hands it to the program, and its value.
struct AppCredential {
    std::string option;
    std::string variable;
    std::string value;
};

// A token pair the emulator hands out, as a login would, and how long the access token lives
// (0 when the service doesn't say).
struct OAuthTokens {
    std::string accessToken;
    std::string refreshToken;
    std::int64_t expiresIn = 0;
};

// How an emulator's tree marks a folder: the entry's FIELD holds VALUE.
struct FolderMark {
    std::string field = "type";
    std::string value = "folder";
};

// A cloud service of the tests: an EmulatorProcess serving one account from a fresh folder of
// its own, every one of the service's hosts at its one address, for the app registration made
// up for it. Stopped when the object goes. Each service's emulator says which switches and
// paths it knows.
class ServiceEmulator {
public:
    // Starts tests/emulators/SCRIPT with the CREDENTIALS; HOSTVARIABLES name the emulator's
    // address to the program, the credentials' variables follow them.
    ServiceEmulator(const std::string& script, const std::vector<std::string>& hostVariables,
                    std::vector<AppCredential> credentials, FolderMark folderMark = {});
    ServiceEmulator(const ServiceEmulator&) = delete;
    ServiceEmulator& operator=(const ServiceEmulator&) = delete;

    // Whether /usr/bin/python3, which the emulators run on, is there.
    static bool isAvailable() { return EmulatorProcess::isAvailable(); }

    // "http://127.0.0.1:PORT", which stands for each of the service's hosts.
    std::string address() const { return process_.address(); }
    // The prefix of SandboxDevice::run that points the program at the emulator:
    // "STOWHAVEN_BOX_API_URL=http://127.0.0.1:PORT ... STOWHAVEN_BOX_CLIENT_SECRET=... ".
    std::string environment() const { return variables_.prefix(); }
    // The same variables set in this process, until the object goes.
    void exportEnvironment() { variables_.exportAll(); }
    // Where the emulator keeps the account's files.
    std::filesystem::path filesFolder() const { return folder_.path() / "files"; }

    // Every item of the account by its path ("/Stowhaven/phone/"), folders ending in "/".
    std::vector<std::string> paths() const;
    // Puts a folder (and the folders above it) or a file straight into the account, as another
    // device or the user's browser would; PATH as "/Stowhaven/other-device/x.stowhvn".
    void addFolder(const std::string& path) const;
    void addFile(const std::string& path, const std::string& bytes) const;

    // The next COUNT requests to the service that the switch NAME can affect and whose path
    // starts with PATHPREFIX (any, when empty) get it, after the first SKIP of them pass
    // untouched; COUNT 0 clears the switch.
    void injectFault(const std::string& name, int count = 1, const std::string& pathPrefix = "",
                     int skip = 0) const {
        process_.injectFault(name, count, pathPrefix, skip);
    }
    // GETs the authorisation address the program printed, as a user who is logged in and
    // agrees, and answers where the service sent the browser ("http://localhost?code=...").
    std::string grant(const std::string& authorizationAddress) const { return process_.redirectOf(authorizationAddress); }
    // A fresh token pair, as after a login, for tests that skip it.
    OAuthTokens issueTokens() const;
    // Every access token handed out so far stops working now; refresh tokens go on working.
    void expireAccessToken() const { process_.expireAccessToken(); }

    // Waits for the request line that starts with PREFIX ("POST /oauth2/token") and answers
    // it; nothing when the emulator ends first or a minute passes.
    std::optional<std::string> waitForLine(const std::string& prefix) { return process_.waitForLine(prefix); }
    // Kills the emulator now, as a crash of the service would.
    void stop() { process_.stop(); }

protected:
    // The value of the credential the emulator takes by OPTION ("--app-key").
    const std::string& credential(const std::string& option) const;
    // A control request of the emulator's own, and its reply's body.
    std::string control(const std::string& method, const std::string& pathAndQuery, const std::string& body = "") const {
        return process_.control(method, pathAndQuery, body);
    }

private:
    TestFolder folder_;
    std::vector<AppCredential> credentials_;
    FolderMark folderMark_;
    EmulatorProcess process_;
    ServiceVariables variables_;
};

}  // namespace stowhaven::test
