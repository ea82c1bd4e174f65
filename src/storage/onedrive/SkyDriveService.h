#pragma once

#include "net/ServiceBase.h"
#include "storage/OAuth2App.h"

#include <optional>
#include <string>

namespace stowhaven {

// Where OneDrive is for this run: the API host and the login host, each replaceable from the
// environment, and the app's client id and secret, which only the environment gives. The
// service addresses items by id: an id goes into a path as it is, so only ids of the
// service's own shape (SkyDriveReplies::isItemId) may reach these addresses.
struct SkyDriveService {
    ServiceBase api;
    ServiceBase login;
    OAuth2App app;

    static SkyDriveService fromEnvironment();

    // Why the engine can't talk to OneDrive at all (a credential or a host unusable), or none.
    std::optional<std::string> problem() const;

    // The user's record, the top folder, the quota.
    std::string meUrl() const { return api.url + "/v5.0/me"; }
    std::string topFolderUrl() const { return meUrl() + "/skydrive"; }
    std::string quotaUrl() const { return topFolderUrl() + "/quota"; }
    // An item: its record, its rename and its delete; the parent of a new folder.
    std::string itemUrl(const std::string& id) const { return api.url + "/v5.0/" + id; }
    // A folder's children; the service reads the doubled slash as one.
    std::string childrenUrl(const std::string& id) const { return api.url + "/v5.0//" + id + "/files"; }

    std::string authorizeUrl() const { return login.url + "/oauth20_authorize.srf"; }
    std::string tokenUrl() const { return login.url + "/oauth20_token.srf"; }
    // Where the service sends the browser once the user has agreed.
    std::string redirectUri() const { return login.url + "/oauth20_desktop.srf"; }
};

}  // namespace stowhaven
