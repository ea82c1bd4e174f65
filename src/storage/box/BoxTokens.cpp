#include "storage/box/BoxTokens.h"

#include "core/Supervisor.h"
#include "core/Text.h"
#include "net/OAuth2Grant.h"
#include "platform/Log.h"
#include "storage/box/BoxReplies.h"

namespace stowhaven {

BoxTokens::BoxTokens(BoxService service) : service_(std::move(service)) {
    client_.addSecret(service_.clientSecret.value_or(""));
}

std::optional<std::string> BoxTokens::storedRefreshToken() {
    auto token = Supervisor::shared().lowLevelGetStringPreferencesDataForKey(kRefreshTokenKey);
    if (!token || token->empty() || *token == kInvalidRefreshToken) return std::nullopt;
    return token;
}

bool BoxTokens::hasRefreshToken() const { return storedRefreshToken().has_value(); }

std::optional<std::string> BoxTokens::header() {
    std::lock_guard lock(mutex_);
    if (!accessToken_) {
        if (const auto token = storedRefreshToken())
            grant("grant_type=refresh_token&refresh_token=" + textutil::percentEncoded(*token));
    }
    if (!accessToken_) return std::nullopt;
    return "Bearer " + *accessToken_;
}

bool BoxTokens::refresh() {
    std::lock_guard lock(mutex_);
    const auto token = storedRefreshToken();
    if (!token) {
        lastError_ = "Not logged in to Box";
        return false;
    }
    SH_LOG("Refreshing the access token...");
    return grant("grant_type=refresh_token&refresh_token=" + textutil::percentEncoded(*token));
}

bool BoxTokens::exchangeCode(const std::string& code) {
    std::lock_guard lock(mutex_);
    return grant("grant_type=authorization_code&code=" + textutil::percentEncoded(code));
}

// Called with the lock held.
bool BoxTokens::grant(const std::string& form) {
    accessToken_.reset();
    if (const auto problem = service_.problem()) {
        lastError_ = problem;
        return false;
    }
    RestRequest request;
    request.method = "POST";
    request.url = service_.tokenUrl();
    request.headers = {"Content-Type: application/x-www-form-urlencoded", "Accept: application/json"};
    request.text = form + "&client_id=" + textutil::percentEncoded(*service_.clientId) +
                   "&client_secret=" + textutil::percentEncoded(*service_.clientSecret);
    request.anonymous = true;
    const RestReply reply = client_.perform(request);
    std::string error;
    auto tokens = reply.isSuccess() ? OAuth2Grant::read(reply.body, error) : std::nullopt;
    // Each grant brings a new refresh token: the one used is void from now on.
    if (tokens && !tokens->refreshToken) {
        error = "The reply holds no refresh token";
        tokens.reset();
    }
    if (!tokens) {
        lastError_ = reply.isSuccess() ? error : BoxReplies::errorText(reply);
        SH_LOG("The token request failed: {}", *lastError_);
        return false;
    }
    Supervisor::shared().lowLevelStorePreferencesData(PlistValue(*tokens->refreshToken), kRefreshTokenKey);
    accessToken_ = tokens->accessToken;
    lastError_.reset();
    SH_LOG("User signed in!");
    return true;
}

void BoxTokens::revoke() {
    std::lock_guard lock(mutex_);
    accessToken_.reset();
    Supervisor::shared().lowLevelStorePreferencesData(PlistValue(kInvalidRefreshToken), kRefreshTokenKey);
}

std::optional<std::string> BoxTokens::lastError() const {
    std::lock_guard lock(mutex_);
    return lastError_;
}

}  // namespace stowhaven
