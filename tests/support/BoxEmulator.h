#pragma once

#include "support/EmulatorProcess.h"
#include "support/ServiceVariables.h"
#include "support/TestFolder.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace stowhaven::test {

// A token pair the emulator hands out, as a login would.
struct BoxTokens {
    std::string accessToken;
    std::string refreshToken;
};

// The Box service of the tests: tests/emulators/box_emulator.py on 127.0.0.1, on a port
// picked at run time, serving the API, upload and authorisation hosts of one account from a
// fresh folder of its own, for an app registration (client id and secret) made up for it.
// Stopped when the object goes.
class BoxEmulator {
public:
    BoxEmulator();
    ~BoxEmulator();
    BoxEmulator(const BoxEmulator&) = delete;
    BoxEmulator& operator=(const BoxEmulator&) = delete;

    // Whether the emulator can run; tests skip through STOWHAVEN_SKIP_WITHOUT_BOX_EMULATOR.
    static bool isAvailable() { return EmulatorProcess::isAvailable(); }

    // "http://127.0.0.1:PORT", which stands for each of the service's hosts.
    std::string address() const { return process_->address(); }
    const std::string& clientId() const { return clientId_; }
    const std::string& clientSecret() const { return clientSecret_; }
    // The prefix of SandboxDevice::run that points the program at the emulator:
    // "STOWHAVEN_BOX_API_URL=http://127.0.0.1:PORT ... STOWHAVEN_BOX_CLIENT_SECRET=... ".
    std::string environment() const { return variables_.prefix(); }
    // The same variables set in this process, until the object goes.
    void exportEnvironment() { variables_.exportAll(); }
    // The account's files, each named by its id (the tree is in an index beside the folder).
    std::filesystem::path filesFolder() const { return folder_.path() / "files"; }

    // Every item of the account by its path ("/Stowhaven/phone/"), folders ending in "/".
    std::vector<std::string> paths() const;
    // Puts a folder (and the folders above it) or a file straight into the account, as another
    // device or the user's browser would; PATH as "/Stowhaven/other-device/x.stowhvn".
    void addFolder(const std::string& path) const;
    void addFile(const std::string& path, const std::string& bytes) const;

    // The next COUNT requests to the service that the switch NAME can affect and whose path
    // starts with PATHPREFIX ("/2.0/folders", "/api/2.0/files/content", "/oauth2/token",
    // "/d/1/" for the downloads' bytes; any, when empty) get it: expire_token, status_429,
    // status_503, drop_mid_body, malformed_json, huge_json, deep_json, hostile_listing,
    // refuse_grant, invalid_grant. Every run of the program starts with a token refresh
    // (POST /oauth2/token), which an unnarrowed switch hits first. COUNT 0 clears the switch.
    void injectFault(const std::string& name, int count = 1, const std::string& pathPrefix = "") const;
    // GETs the authorisation address the program printed, as a user who is logged in and
    // agrees, and answers where the service sent the browser ("http://localhost?code=...").
    std::string grant(const std::string& authorizationAddress) const;
    // A fresh token pair, as after a login, for tests that skip it.
    BoxTokens issueTokens() const;
    // Every access token handed out so far stops working now; refresh tokens go on working.
    void expireAccessToken() const;

    // Waits for the request line that starts with PREFIX ("POST /api/2.0/files/content") and
    // answers it; nothing when the emulator ends first or a minute passes.
    std::optional<std::string> waitForLine(const std::string& prefix) { return process_->waitForLine(prefix); }
    // Kills the emulator now, as a crash of the service would.
    void stop() { process_->stop(); }

private:
    TestFolder folder_;
    std::string clientId_;
    std::string clientSecret_;
    std::unique_ptr<EmulatorProcess> process_;
    ServiceVariables variables_;
};

}  // namespace stowhaven::test

#define STOWHAVEN_SKIP_WITHOUT_BOX_EMULATOR()           \
    if (!::stowhaven::test::BoxEmulator::isAvailable()) \
    GTEST_SKIP() << "the Box emulator of the tests needs /usr/bin/python3"
