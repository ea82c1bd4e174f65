#pragma once

#include "net/ServiceBase.h"
#include "storage/OAuth2App.h"

#include <optional>
#include <string>

namespace stowhaven {

// Where Google Drive is for this run: the API, upload and authorisation hosts, each
// replaceable from the environment, and the app's client id and secret, which only the
// environment gives (none is compiled in).
struct GDriveService {
    ServiceBase api;
    ServiceBase upload;
    ServiceBase authorization;
    OAuth2App app;

    static GDriveService fromEnvironment();

    // Why the engine can't talk to Drive at all (a credential missing, a host refused), or none.
    std::optional<std::string> problem() const;

    std::string apiUrl(const std::string& path) const { return api.url + "/drive/v3" + path; }
    std::string uploadUrl() const { return upload.url + "/upload/drive/v3/files"; }
    std::string tokenUrl() const { return authorization.url + "/o/oauth2/token"; }
    std::string authorizeUrl() const { return authorization.url + "/o/oauth2/v2/auth"; }
};

}  // namespace stowhaven
