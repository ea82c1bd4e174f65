#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace stowhaven {

// Where a service host is: its published base ("https://api.box.com"), or the scheme, host
// and port that the environment variable VARIABLE gives in its place (a user's own proxy,
// the tests' emulators). The engines add the service's paths to it. Plain http is taken for
// loopback hosts only (127.0.0.1, ::1, localhost).
struct ServiceBase {
    std::string url;
    // Why the variable's value can't be used; the URL is then empty, and the engine refuses
    // to work rather than send the account's tokens elsewhere.
    std::optional<std::string> error;

    static ServiceBase resolve(const char* variable, std::string_view published);
    // Whether a service may send the program to ADDRESS (a download's): https, or plain http
    // to a loopback host, without credentials in it.
    static bool isSecureOrLoopback(const std::string& address);
};

// The value of an app credential's variable (STOWHAVEN_BOX_CLIENT_ID), none when unset or
// empty: no credential is compiled in.
std::optional<std::string> appCredential(const char* variable);

}  // namespace stowhaven
