#pragma once

#include "support/ServiceEmulator.h"

namespace stowhaven::test {

// The Google Drive service of the tests: tests/emulators/gdrive_emulator.py, serving the API,
// upload and OAuth hosts of one account, for an app registration (client id and secret) made
// up for it; its tokens are of the drive.file scope.
//
// Its switches (injectFault), on paths such as "/drive/v3/files", "/upload/drive/v3/files"
// and "/o/oauth2/token": expire_token, status_429, status_503, drop_mid_body, malformed_json,
// huge_json, deep_json, hostile_listing, refuse_grant, invalid_grant; a skip lets the start
// of a resumable upload pass before its bytes. Every run of the program starts with a token
// refresh (POST /o/oauth2/token), which an unnarrowed switch hits first. A login's grant()
// lands on "http://127.0.0.1?code=...".
class GDriveEmulator : public ServiceEmulator {
public:
    GDriveEmulator();
};

}  // namespace stowhaven::test
