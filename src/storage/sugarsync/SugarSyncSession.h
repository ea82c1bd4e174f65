#pragma once

#include "net/RestClient.h"
#include "platform/Date.h"
#include "storage/sugarsync/SugarSyncService.h"

#include <mutex>
#include <optional>
#include <string>

namespace stowhaven {

class SugarSyncRetries;

// The account's token: the address the authorisation reply hands out in its Location
// header, sent as the whole Authorization header of every other request, and its expiry.
// The token is bought with the user's own login and password, kept here for the run.
//
// The token lasts about an hour and is renewed by a new login: before a request, when less
// than kRenewalMargin of its life is left (the check stands in for a timer that would log in
// again every 45 minutes), and after a 401, when it ended sooner.
class SugarSyncSession final : public RestAuthorization {
public:
    static constexpr double kRenewalMargin = 15 * 60;

    SugarSyncSession(SugarSyncService service, SugarSyncRetries& retries);

    // The token, renewed first when it is about to end; none when not logged in.
    std::optional<std::string> header() override;
    // After a 401: a new token with the credentials in hand.
    bool refresh() override;

    // Buys a token with these credentials, trimmed of white space, and keeps them; false,
    // with lastError(), when the service refuses them or can't be reached.
    bool logIn(const std::string& user, const std::string& password);
    // Forgets the token and the credentials.
    void logOut();
    bool isLoggedIn() const;
    std::string userName() const;
    std::optional<Date> expiration() const;
    std::optional<std::string> lastError() const;

private:
    // Called with the lock held.
    bool authorize();

    SugarSyncService service_;
    SugarSyncRetries& retries_;
    // A client of its own: a renewal happens in the middle of another client's request.
    RestClient client_;
    mutable std::mutex mutex_;
    std::string user_;
    std::string password_;
    std::optional<std::string> token_;
    std::optional<Date> expiration_;
    std::optional<std::string> lastError_;
};

}  // namespace stowhaven
