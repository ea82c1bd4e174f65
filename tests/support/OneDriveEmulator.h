#pragma once

#include "support/ServiceEmulator.h"

#include <string>

namespace stowhaven::test {

// The OneDrive service of the tests: tests/emulators/onedrive_emulator.py, serving the API and
// login hosts of one account, for an app registration (client id and secret) made up for it.
// Files lie under their names with ".pdf" added ("/Stowhaven/phone/x.stowhvn.pdf").
//
// Its switches (injectFault), on paths such as "/v5.0/", "/oauth20_token.srf" and "/d/" for
// the downloads' bytes: expire_token, status_429 (the service's 420), status_503,
// drop_mid_body, malformed_json, huge_json, deep_json, hostile_listing, foreign_redirect,
// refuse_grant, invalid_grant. A login's grant() lands on ".../oauth20_desktop.srf?code=...".
class OneDriveEmulator : public ServiceEmulator {
public:
    OneDriveEmulator();

    // status_429 whose message asks to retry after SECONDS.
    void injectThrottling(int seconds, int count = 1, const std::string& pathPrefix = "") const;
};

}  // namespace stowhaven::test
