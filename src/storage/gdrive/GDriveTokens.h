#pragma once

#include "net/RestClient.h"
#include "storage/gdrive/GDriveService.h"

#include <mutex>
#include <optional>
#include <string>

namespace stowhaven {

// The account's OAuth 2 tokens: the access token, kept in memory only, and the refresh token,
// kept in the setting "Stowhaven_v7_GDRIVE". The refresh token lasts: a refresh brings only a
// new access token. The first request of a run fetches one, as does a 401. Requests of any
// thread may ask for the header and the refresh.
class GDriveTokens final : public RestAuthorization {
public:
    static constexpr const char* kRefreshTokenKey = "Stowhaven_v7_GDRIVE";
    // Where the authorisation page sends the user; the code exchange names it again.
    static constexpr const char* kRedirectAddress = "http://127.0.0.1";

    explicit GDriveTokens(GDriveService service);

    // "Bearer <access token>".
    std::optional<std::string> header() override;
    bool refresh() override;

    // Trades the code the user brought back (with the PKCE verifier of its address) for a
    // pair; false, with lastError(), when the service refuses it.
    bool exchangeCode(const std::string& code, const std::string& verifier);
    // Forgets the access token in memory.
    void forget();
    // The service's account of the last refused grant, or the connection's.
    std::optional<std::string> lastError() const;

    // The stored refresh token, none without one.
    static std::optional<std::string> storedRefreshToken();

private:
    bool grant(const std::string& form);

    GDriveService service_;
    // A client of its own: a refresh happens in the middle of another client's request.
    RestClient client_;
    mutable std::mutex mutex_;
    std::optional<std::string> accessToken_;
    std::optional<std::string> lastError_;
};

}  // namespace stowhaven
