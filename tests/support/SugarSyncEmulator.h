#pragma once

#include "support/EmulatorProcess.h"
#include "support/ServiceVariables.h"
#include "support/TestFolder.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven::test {

// The SugarSync service of the tests: tests/emulators/sugarsync_emulator.py on 127.0.0.1, on
// a port picked at run time, serving the API host of one account from a fresh folder of its
// own, for an app (access key and private key) and a user (login and password) made up for
// it. The password holds what XML would read as markup, so that every login proves it goes
// whole. Stopped when the object goes.
class SugarSyncEmulator {
public:
    SugarSyncEmulator();
    ~SugarSyncEmulator();
    SugarSyncEmulator(const SugarSyncEmulator&) = delete;
    SugarSyncEmulator& operator=(const SugarSyncEmulator&) = delete;

    // Whether the emulator can run; tests skip through STOWHAVEN_SKIP_WITHOUT_SUGARSYNC_EMULATOR.
    static bool isAvailable() { return EmulatorProcess::isAvailable(); }

    // "http://127.0.0.1:PORT", the API host; the references it hands out are on it.
    std::string address() const { return process_->address(); }
    // The user's credentials, which the emulator accepts.
    const std::string& user() const { return user_; }
    const std::string& password() const { return password_; }
    // The prefix of SandboxDevice::run that points the program at the emulator:
    // "STOWHAVEN_SUGARSYNC_API_URL=http://127.0.0.1:PORT ... STOWHAVEN_SUGARSYNC_PRIVATE_KEY=... ".
    std::string environment() const { return variables_.prefix(); }
    // The same variables set in this process, until the object goes.
    void exportEnvironment() { variables_.exportAll(); }

    // Every item of the Magic Briefcase by its path ("/Stowhaven/phone/"), folders ending in
    // "/", names decoded as the program reads them; files whose content never came are left
    // out, as the program leaves them out.
    std::vector<std::string> paths() const;
    // Puts a folder (and the folders above it) or a file straight into the Magic Briefcase,
    // names stored as given; PATH as "/Stowhaven/other-device/x.stowhvn".
    void addFolder(const std::string& path) const;
    void addFile(const std::string& path, const std::string& bytes) const;

    // The next COUNT requests to the service that the switch NAME can affect and whose path
    // starts with PATHPREFIX ("/authorization", "/user", "/folder/", "/file/"; any, when
    // empty) get it: expire_token, status_429, status_503, drop_mid_body, malformed_xml,
    // huge_xml, deep_xml, hostile_listing, refuse_grant, bad_expiration. Every start of the
    // engine begins with a login (POST /authorization), which an unnarrowed switch hits
    // first. COUNT 0 clears the switch.
    void injectFault(const std::string& name, int count = 1, const std::string& pathPrefix = "") const {
        process_->injectFault(name, count, pathPrefix);
    }
    // The next COUNT logins are refused as for a wrong password.
    void refuseLogins(int count) const { injectFault("refuse_grant", count, "/authorization"); }
    // Every access token handed out so far stops working now.
    void expireAccessToken() const { process_->expireAccessToken(); }

    // Waits for the request line that starts with PREFIX ("POST /authorization") and answers
    // it; nothing when the emulator ends first or a minute passes.
    std::optional<std::string> waitForLine(const std::string& prefix) { return process_->waitForLine(prefix); }
    // Kills the emulator now, as a crash of the service would.
    void stop() { process_->stop(); }

private:
    TestFolder folder_;
    std::string accessKey_;
    std::string privateKey_;
    std::string user_;
    std::string password_;
    std::unique_ptr<EmulatorProcess> process_;
    ServiceVariables variables_;
};

}  // namespace stowhaven::test

#define STOWHAVEN_SKIP_WITHOUT_SUGARSYNC_EMULATOR()           \
    if (!::stowhaven::test::SugarSyncEmulator::isAvailable()) \
    GTEST_SKIP() << "the SugarSync emulator of the tests needs /usr/bin/python3"
