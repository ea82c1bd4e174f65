#pragma once

#include "net/RestClient.h"
#include "storage/box/BoxService.h"

#include <mutex>
#include <optional>
#include <string>

namespace stowhaven {

// The account's OAuth2 tokens: the access token, kept in memory only, and the refresh token,
// kept in the setting "box_api_refresh_token". A refresh token is good for one use: each
// grant brings a new one, which is stored at once, so that a run cut short afterwards still
// finds the valid one. Requests of any thread may ask for the header and the refresh.
class BoxTokens final : public RestAuthorization {
public:
    static constexpr const char* kRefreshTokenKey = "box_api_refresh_token";
    // What the setting holds while no user is logged in.
    static constexpr const char* kInvalidRefreshToken = "INVALID_REFRESH_TOKEN";

    explicit BoxTokens(BoxService service);

    // "Bearer <access token>", the first of a run fetched with the refresh token.
    std::optional<std::string> header() override;
    // After a 401: a new pair with the refresh token.
    bool refresh() override;

    // Trades the code the user brought back from the authorisation page for a pair; false,
    // with lastError(), when the service refuses it.
    bool exchangeCode(const std::string& code);
    // A refresh token stored and not known to be void.
    bool hasRefreshToken() const;
    // Forgets the pair, in memory and in the settings.
    void revoke();
    // The service's account of the last refused grant, or the connection's.
    std::optional<std::string> lastError() const;

    // The stored refresh token, none without one.
    static std::optional<std::string> storedRefreshToken();

private:
    bool grant(const std::string& form);

    BoxService service_;
    // A client of its own: a refresh happens in the middle of another client's request.
    RestClient client_;
    mutable std::mutex mutex_;
    std::optional<std::string> accessToken_;
    std::optional<std::string> lastError_;
};

}  // namespace stowhaven
