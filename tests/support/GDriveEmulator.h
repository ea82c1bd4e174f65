#pragma once

#include "support/EmulatorProcess.h"
#include "support/EnvironmentScope.h"
#include "support/TestFolder.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace stowhaven::test {

// A token pair the emulator hands out, as a login would.
struct GDriveTokens {
    std::string accessToken;
    std::string refreshToken;
};

// The Google Drive service of the tests: tests/emulators/gdrive_emulator.py on 127.0.0.1, on a
// port picked at run time, serving the API, upload and OAuth hosts of one account from a
// fresh folder of its own, for an app registration (client id and secret) made up for it.
// Stopped when the object goes.
class GDriveEmulator {
public:
    GDriveEmulator();
    ~GDriveEmulator();
    GDriveEmulator(const GDriveEmulator&) = delete;
    GDriveEmulator& operator=(const GDriveEmulator&) = delete;

    // Whether the emulator can run; tests skip through STOWHAVEN_SKIP_WITHOUT_GDRIVE_EMULATOR.
    static bool isAvailable() { return EmulatorProcess::isAvailable(); }

    // "http://127.0.0.1:PORT", which stands for each of the service's hosts.
    std::string address() const { return process_->address(); }
    const std::string& clientId() const { return clientId_; }
    const std::string& clientSecret() const { return clientSecret_; }
    // The prefix of SandboxDevice::run that points the program at the emulator:
    // "STOWHAVEN_GDRIVE_API_URL=http://127.0.0.1:PORT ... STOWHAVEN_GDRIVE_CLIENT_SECRET=... ".
    std::string environment() const;
    // The same variables set in this process, until the object goes.
    void exportEnvironment();

    // Every item of the account by its path ("/Stowhaven/phone/"), folders ending in "/".
    std::vector<std::string> paths() const;
    // Puts a folder (and the folders above it) or a file straight into the account, as made by
    // the program on another device; PATH as "/Stowhaven/other-device/x.stowhvn".
    void addFolder(const std::string& path) const;
    void addFile(const std::string& path, const std::string& bytes) const;

    // The next COUNT requests to the service that the switch NAME can affect and whose path
    // starts with PATHPREFIX ("/drive/v3/files", "/upload/drive/v3/files", "/o/oauth2/token";
    // any, when empty) get it: expire_token, status_429, status_503, drop_mid_body,
    // malformed_json, huge_json, deep_json, hostile_listing, refuse_grant, invalid_grant.
    // Every run of the program starts with a token refresh (POST /o/oauth2/token), which an
    // unnarrowed switch hits first. The first SKIP of those requests pass untouched (the
    // start of a resumable upload, before its bytes). COUNT 0 clears the switch.
    void injectFault(const std::string& name, int count = 1, const std::string& pathPrefix = "", int skip = 0) const;
    // GETs the authorisation address the program printed, as a user who is logged in and
    // agrees, and answers where the service sent the browser ("http://127.0.0.1?code=...").
    std::string grant(const std::string& authorizationAddress) const;
    // A fresh token pair of the drive.file scope, as after a login, for tests that skip it.
    GDriveTokens issueTokens() const;
    // Every access token handed out so far stops working now; refresh tokens go on working.
    void expireAccessToken() const;

    // Waits for the request line that starts with PREFIX ("PUT /upload/drive/v3/files") and
    // answers it; nothing when the emulator ends first or a minute passes.
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

#define STOWHAVEN_SKIP_WITHOUT_GDRIVE_EMULATOR()           \
    if (!::stowhaven::test::GDriveEmulator::isAvailable()) \
    GTEST_SKIP() << "the Google Drive emulator of the tests needs /usr/bin/python3"
