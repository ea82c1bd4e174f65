#pragma once

#include "support/ServiceEmulator.h"

namespace stowhaven::test {

// The Box service of the tests: tests/emulators/box_emulator.py, serving the API, upload and
// authorisation hosts of one account, for an app registration (client id and secret) made up
// for it. The account's files lie in filesFolder() named by their ids (the tree is in an
// index beside the folder).
//
// Its switches (injectFault), on paths such as "/2.0/folders", "/api/2.0/files/content",
// "/oauth2/token" and "/d/1/" for the downloads' bytes: expire_token, status_429, status_503,
// drop_mid_body, malformed_json, huge_json, deep_json, hostile_listing, refuse_grant,
// invalid_grant. Every run of the program starts with a token refresh (POST /oauth2/token),
// which an unnarrowed switch hits first. A login's grant() lands on "http://localhost?code=...".
class BoxEmulator : public ServiceEmulator {
public:
    BoxEmulator();
};

}  // namespace stowhaven::test
