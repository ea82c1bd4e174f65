#pragma once

#include "support/ServerProcess.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven::test {

// A service emulator of the tests (a Python program under tests/emulators/) on 127.0.0.1, on
// a port it picks and announces ("LISTENING <port>"), and what every service's fixture does
// with it: control requests under /_emulator/, a browser's visit to a sign-in page, the
// request lines it prints. Killed when the object goes.
class EmulatorProcess {
public:
    // Starts tests/emulators/SCRIPT with "--folder FOLDER --port 0" and ARGUMENTS; throws when
    // it doesn't start.
    EmulatorProcess(const std::string& script, const std::filesystem::path& folder,
                    const std::vector<std::string>& arguments);

    // Whether the Python the emulators run on is installed.
    static bool isAvailable();

    // "http://127.0.0.1:PORT".
    std::string address() const;
    // A control request ("fault?name=...&count=1") and its reply's body; throws when the
    // emulator refuses it.
    std::string control(const std::string& method, const std::string& pathAndQuery, const std::string& body = "") const;
    // The next COUNT requests that the switch NAME can affect, whose path starts with
    // PATHPREFIX (any, when empty), get it after the first SKIP of them pass untouched (where
    // the emulator takes a skip); COUNT 0 clears it.
    void injectFault(const std::string& name, int count, const std::string& pathPrefix, int skip = 0) const;
    // Every access token handed out so far stops working now.
    void expireAccessToken() const { control("POST", "expire_access_token"); }
    // Opens ADDRESS as a browser would and answers where its 302 sends the browser; throws
    // when it doesn't redirect.
    std::string redirectOf(const std::string& address) const;
    // Waits for a request line that starts with PREFIX ("POST /1/chunked_upload") and answers
    // it; nothing when the emulator ends first or a minute passes.
    std::optional<std::string> waitForLine(const std::string& prefix) { return process_->waitForLine(prefix); }
    // Kills the emulator now, as a crash of the service would.
    void stop() { process_->stop(); }

private:
    std::unique_ptr<ServerProcess> process_;
    int port_ = 0;
};

// LENGTH characters drawn at random from ALPHABET: a made-up app key or secret.
std::string randomText(const std::string& alphabet, std::size_t length);

}  // namespace stowhaven::test
