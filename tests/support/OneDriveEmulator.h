#pragma once

#include "support/EmulatorProcess.h"
#include "support/EnvironmentScope.h"
#include "support/TestFolder.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace stowhaven::test {

// A token pair the emulator hands out, as a login would, and how long the access token lives.
struct OneDriveTokens {
    std::string accessToken;
    std::string refreshToken;
    std::int64_t expiresIn = 0;
};

// The OneDrive service of the tests: tests/emulators/onedrive_emulator.py on 127.0.0.1, on a
// port picked at run time, serving the API and login hosts of one account from a fresh folder
// of its own, for an app registration (client id and secret) made up for it. Stopped when the
// object goes.
class OneDriveEmulator {
public:
    OneDriveEmulator();
    ~OneDriveEmulator();
    OneDriveEmulator(const OneDriveEmulator&) = delete;
    OneDriveEmulator& operator=(const OneDriveEmulator&) = delete;

    // Whether the emulator can run; tests skip through STOWHAVEN_SKIP_WITHOUT_ONEDRIVE_EMULATOR.
    static bool isAvailable() { return EmulatorProcess::isAvailable(); }

    // "http://127.0.0.1:PORT", which stands for both of the service's hosts.
    std::string address() const { return process_->address(); }
    const std::string& clientId() const { return clientId_; }
    const std::string& clientSecret() const { return clientSecret_; }
    // The prefix of SandboxDevice::run that points the program at the emulator:
    // "STOWHAVEN_ONEDRIVE_API_URL=http://127.0.0.1:PORT ... STOWHAVEN_ONEDRIVE_CLIENT_SECRET=... ".
    std::string environment() const;
    // The same variables set in this process, until the object goes.
    void exportEnvironment();

    // Every item of the account by its path ("/Stowhaven/phone/x.stowhvn.pdf"), folders
    // ending in "/".
    std::vector<std::string> paths() const;
    // Puts a folder (and the folders above it) or a file straight into the account, as another
    // device or the user's browser would; PATH as "/Stowhaven/other-device/x.stowhvn.pdf".
    void addFolder(const std::string& path) const;
    void addFile(const std::string& path, const std::string& bytes) const;

    // The next COUNT requests to the service that the switch NAME can affect and whose path
    // starts with PATHPREFIX ("/v5.0/", "/oauth20_token.srf", "/d/" for the downloads' bytes;
    // any, when empty) get it: expire_token, status_429 (the service's 420), status_503,
    // drop_mid_body, malformed_json, huge_json, deep_json, hostile_listing, refuse_grant,
    // invalid_grant. COUNT 0 clears the switch.
    void injectFault(const std::string& name, int count = 1, const std::string& pathPrefix = "") const;
    // status_429 whose message asks to retry after SECONDS.
    void injectThrottling(int seconds, int count = 1, const std::string& pathPrefix = "") const;
    // GETs the authorisation address the program printed, as a user who is logged in and
    // agrees, and answers where the service sent the browser (".../oauth20_desktop.srf?code=...").
    std::string grant(const std::string& authorizationAddress) const;
    // A fresh token pair, as after a login, for tests that skip it.
    OneDriveTokens issueTokens() const;
    // Every access token handed out so far stops working now; refresh tokens go on working.
    void expireAccessToken() const;

    // Waits for the request line that starts with PREFIX ("PUT /v5.0/") and answers it;
    // nothing when the emulator ends first or a minute passes.
    std::optional<std::string> waitForLine(const std::string& prefix) { return process_->waitForLine(prefix); }
    // Kills the emulator now, as a crash of the service would.
    void stop() { process_->stop(); }

private:
    // The variables that point the program at the emulator, with their values.
    std::vector<std::pair<std::string, std::string>> variables() const;

    TestFolder folder_;
    std::string clientId_;
    std::string clientSecret_;
    std::unique_ptr<EmulatorProcess> process_;
    std::optional<EnvironmentScope> exported_;
};

}  // namespace stowhaven::test

#define STOWHAVEN_SKIP_WITHOUT_ONEDRIVE_EMULATOR()           \
    if (!::stowhaven::test::OneDriveEmulator::isAvailable()) \
    GTEST_SKIP() << "the OneDrive emulator of the tests needs /usr/bin/python3"
