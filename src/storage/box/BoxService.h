#pragma once

#include "net/ServiceBase.h"
#include "storage/OAuth2App.h"

#include <optional>
#include <string>

namespace stowhaven {

// Where Box is for this run: its three hosts, each replaceable from the environment, and the
// app's client id and secret, which only the environment gives (none is compiled in).
struct BoxService {
    ServiceBase api;
    ServiceBase upload;
    ServiceBase authorization;
    OAuth2App app;

    static BoxService fromEnvironment();

    // Why the engine can't talk to Box at all (a credential missing, a host refused), or none.
    std::optional<std::string> problem() const;

    std::string apiUrl(const std::string& path) const { return api.url + path; }
    std::string uploadUrl() const { return upload.url + "/api/2.0/files/content"; }
    std::string tokenUrl() const { return api.url + "/oauth2/token"; }
    std::string authorizeUrl() const { return authorization.url + "/api/oauth2/authorize"; }
};

}  // namespace stowhaven
