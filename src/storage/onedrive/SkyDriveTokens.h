#pragma once

#include "net/RestClient.h"
#include "platform/Date.h"
#include "storage/onedrive/SkyDriveService.h"

#include <mutex>
#include <optional>
#include <string>

namespace stowhaven {

// The account's OAuth 2 tokens and the access token's expiry, kept in the settings
// "SKYDRIVE_ACCESS_TOKEN", "SKYDRIVE_REFRESH_TOKEN" and "SKYDRIVE_TOKEN_EXPIRY_DATE". An
// access token whose expiry has passed is refreshed before the request that would use it,
// and after a 401; each grant's pair is stored at once. Requests of any thread may ask.
class SkyDriveTokens final : public RestAuthorization {
public:
    static constexpr const char* kAccessTokenKey = "SKYDRIVE_ACCESS_TOKEN";
    static constexpr const char* kRefreshTokenKey = "SKYDRIVE_REFRESH_TOKEN";
    static constexpr const char* kExpiryDateKey = "SKYDRIVE_TOKEN_EXPIRY_DATE";

    explicit SkyDriveTokens(SkyDriveService service);

    // "bearer <access token>", refreshed first when it has expired; none without a token.
    std::optional<std::string> header() override;
    // After a 401: a new pair with the refresh token.
    bool refresh() override;

    // Trades the code the user brought back from the authorisation page for a pair; false,
    // with lastError(), when the service refuses it.
    bool exchangeCode(const std::string& code);
    // An access token is held (stored).
    bool hasAccessToken() const;
    // Forgets the tokens, in the settings too.
    void removeAllTokens();
    // The service's account of the last refused grant, or the connection's.
    std::optional<std::string> lastError() const;

    // Removes the stored tokens and expiry.
    static void unlink();

private:
    // Called with the lock held.
    bool grant(const std::string& grantType, const std::string& parameters);
    void storeTokenInfos(const std::string& accessToken, const std::optional<std::string>& refreshToken, Date expiry);

    SkyDriveService service_;
    // A client of its own: a refresh happens in the middle of another client's request.
    RestClient client_;
    mutable std::mutex mutex_;
    std::optional<std::string> lastError_;
};

}  // namespace stowhaven
