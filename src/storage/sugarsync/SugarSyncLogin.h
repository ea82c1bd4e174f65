#pragma once

#include <memory>
#include <optional>
#include <string>

namespace stowhaven {

class SugarSyncHelper;

// The terminal login to SugarSync, with the user's own login and password (the service has
// no page of its own to agree on).
class SugarSyncLogin {
public:
    // Logs in with the user's own name and password: the credentials proved (the token and
    // the user record fetched, the product and device folders found or made), stored, and
    // SugarSync made the current engine, kept so. Nothing on success, otherwise the service's
    // words or what went wrong.
    std::optional<std::string> logIn(const std::string& user, const std::string& password);
    // Once logged in.
    std::string accountName();
    // Forgets the stored credentials and goes back to local storage, kept so, when SugarSync
    // was current.
    static void logOut();

private:
    std::shared_ptr<SugarSyncHelper> helper_;
};

}  // namespace stowhaven
