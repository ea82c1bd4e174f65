#pragma once

#include "support/ServiceEmulator.h"

#include <string>

namespace stowhaven::test {

// A token pair of the account, as the sign-in page hands it to the app.
struct DropboxToken {
    std::string token;
    std::string secret;
    std::string uid;
};

// The Dropbox service of the tests: tests/emulators/dropbox_emulator.py, serving the API,
// content and web hosts of one account, for an app key and secret made up for it. The
// account's "/" is filesFolder(): files put there are in the account at once (it keeps no
// tree for paths(), addFolder() or addFile()).
//
// Its switches (injectFault), on paths such as "/1/chunked_upload" and "/1/metadata":
// expire_token, status_429, status_503, drop_mid_body, malformed_json, huge_json, deep_json,
// hostile_listing, refuse_grant. A sign-in's grant() lands on "db-KEY://1/connect?oauth_token=...".
class DropboxEmulator : public ServiceEmulator {
public:
    DropboxEmulator();

    const std::string& appKey() const { return credential("--app-key"); }
    // A fresh token pair, as after a sign-in, for tests that skip it.
    DropboxToken issueToken() const;
};

}  // namespace stowhaven::test
