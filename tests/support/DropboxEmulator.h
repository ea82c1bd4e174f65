#pragma once

#include "support/EmulatorProcess.h"
#include "support/ServiceVariables.h"
#include "support/TestFolder.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace stowhaven::test {

// A token pair of the account, as the sign-in page hands it to the app.
struct DropboxToken {
    std::string token;
    std::string secret;
    std::string uid;
};

// The Dropbox service of the tests: tests/emulators/dropbox_emulator.py on 127.0.0.1, on a
// port picked at run time, serving the API, content and web hosts of one account from a
// fresh folder of its own, for an app key and secret made up for it. Stopped when the object
// goes.
class DropboxEmulator {
public:
    DropboxEmulator();
    ~DropboxEmulator();
    DropboxEmulator(const DropboxEmulator&) = delete;
    DropboxEmulator& operator=(const DropboxEmulator&) = delete;

    // Whether /usr/bin/python3 is there; tests skip through STOWHAVEN_SKIP_WITHOUT_DROPBOX_EMULATOR.
    static bool isAvailable() { return EmulatorProcess::isAvailable(); }

    // "http://127.0.0.1:PORT", which stands for each of the service's hosts.
    std::string address() const { return process_->address(); }
    const std::string& appKey() const { return appKey_; }
    const std::string& appSecret() const { return appSecret_; }
    // The prefix of SandboxDevice::run that points the program at the emulator:
    // "STOWHAVEN_DROPBOX_API_URL=http://127.0.0.1:PORT ... STOWHAVEN_DROPBOX_APP_SECRET=... ".
    std::string environment() const { return variables_.prefix(); }
    // The same variables set in this process, until the object goes.
    void exportEnvironment() { variables_.exportAll(); }
    // The account's tree, the account's "/" : files put here are in the account at once.
    std::filesystem::path filesFolder() const { return folder_.path() / "files"; }

    // The next COUNT requests whose path starts with PATHPREFIX ("/1/chunked_upload",
    // "/1/metadata"; any, when empty) get the switch NAME: expire_token, status_429,
    // status_503, drop_mid_body, malformed_json, huge_json, deep_json, hostile_listing,
    // refuse_grant. COUNT 0 clears the switch.
    void injectFault(const std::string& name, int count = 1, const std::string& pathPrefix = "") const;
    // GETs the sign-in address the program printed, as a user who is logged in and agrees,
    // and answers where the service sends the browser ("db-KEY://1/connect?oauth_token=...").
    std::string grant(const std::string& signInAddress) const { return process_->redirectOf(signInAddress); }
    // A fresh token pair, as after a sign-in, for tests that skip it.
    DropboxToken issueToken() const;

    // Waits for the request line that starts with PREFIX ("POST /1/chunked_upload") and
    // answers it; nothing when the emulator ends first or a minute passes.
    std::optional<std::string> waitForLine(const std::string& prefix) { return process_->waitForLine(prefix); }
    // Kills the emulator now, as a crash of the service would.
    void stop() { process_->stop(); }

private:
    TestFolder folder_;
    std::string appKey_;
    std::string appSecret_;
    std::unique_ptr<EmulatorProcess> process_;
    ServiceVariables variables_;
};

}  // namespace stowhaven::test

#define STOWHAVEN_SKIP_WITHOUT_DROPBOX_EMULATOR()           \
    if (!::stowhaven::test::DropboxEmulator::isAvailable()) \
    GTEST_SKIP() << "the Dropbox emulator of the tests needs /usr/bin/python3"
