#pragma once

#include "net/RestClient.h"

#include <mutex>
#include <optional>
#include <string>

namespace stowhaven {

// Where and as whom an engine asks a service's token endpoint for OAuth 2 tokens.
struct OAuth2Account {
    // "Box", for the messages.
    std::string serviceName;
    std::string tokenUrl;
    std::string clientId;
    std::string clientSecret;
    // Why no grant can be asked at all (an app credential missing, a host refused), or none.
    std::optional<std::string> problem;
    // The setting that keeps the refresh token.
    const char* refreshTokenKey = "";
    // What that setting holds once the user has logged out; empty for nothing.
    const char* loggedOutValue = "";
};

// An account's OAuth 2 tokens: the access token, kept in memory only, and the refresh token,
// kept in its setting. A grant that brings a new refresh token stores it at once (services
// whose refresh tokens serve once send one each time, and a run cut short afterwards must
// still find the valid one); one that brings none keeps the stored one. The first request
// of a run fetches an access token, as does a 401. Requests of any thread may ask for the
// header and the refresh.
class OAuth2Tokens final : public RestAuthorization {
public:
    explicit OAuth2Tokens(OAuth2Account account);

    // "Bearer <access token>".
    std::optional<std::string> header() override;
    // After a 401: a new access token with the refresh token.
    bool refresh() override;

    // Trades the code the user brought back from the authorisation page for a pair, with the
    // service's own parameters of the exchange (EXTRAFORM: "&redirect_uri=...", encoded);
    // false, with lastError(), when the service refuses it.
    bool exchangeCode(const std::string& code, const std::string& extraForm = "");
    // A refresh token stored.
    bool hasRefreshToken() const { return storedRefreshToken().has_value(); }
    std::optional<std::string> storedRefreshToken() const {
        return storedIn(account_.refreshTokenKey, account_.loggedOutValue);
    }
    // The refresh token the setting KEY holds, none when it holds none or LOGGEDOUTVALUE.
    static std::optional<std::string> storedIn(const char* key, const char* loggedOutValue);
    // Forgets the pair, in memory and in the settings.
    void revoke();
    // The service's account of the last refused grant, or the connection's.
    std::optional<std::string> lastError() const;

private:
    bool grant(const std::string& form);

    OAuth2Account account_;
    // A client of its own: a refresh happens in the middle of another client's request.
    RestClient client_;
    mutable std::mutex mutex_;
    std::optional<std::string> accessToken_;
    std::optional<std::string> lastError_;
};

}  // namespace stowhaven
