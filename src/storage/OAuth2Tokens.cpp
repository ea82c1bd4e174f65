#include "storage/OAuth2Tokens.h"

#include "core/Supervisor.h"
#include "core/Text.h"
#include "net/OAuth2Grant.h"
#include "platform/Log.h"

namespace stowhaven {

namespace {

std::string refreshForm(const std::string& token) {
    return "grant_type=refresh_token&refresh_token=" + textutil::percentEncoded(token);
}

}  // namespace

OAuth2Tokens::OAuth2Tokens(OAuth2Account account) : account_(std::move(account)) {
    client_.addSecret(account_.clientSecret);
}

std::optional<std::string> OAuth2Tokens::storedIn(const char* key, const char* loggedOutValue) {
    auto token = Supervisor::shared().lowLevelGetStringPreferencesDataForKey(key);
    if (!token || token->empty() || *token == loggedOutValue) return std::nullopt;
    return token;
}

std::optional<std::string> OAuth2Tokens::header() {
    std::lock_guard lock(mutex_);
    if (!accessToken_) {
        if (const auto token = storedRefreshToken()) grant(refreshForm(*token));
    }
    if (!accessToken_) return std::nullopt;
    return "Bearer " + *accessToken_;
}

bool OAuth2Tokens::refresh() {
    std::lock_guard lock(mutex_);
    const auto token = storedRefreshToken();
    if (!token) {
        lastError_ = "Not logged in to " + account_.serviceName;
        return false;
    }
    SH_LOG("Refreshing the access token...");
    return grant(refreshForm(*token));
}

bool OAuth2Tokens::exchangeCode(const std::string& code, const std::string& extraForm) {
    std::lock_guard lock(mutex_);
    return grant("grant_type=authorization_code&code=" + textutil::percentEncoded(code) + extraForm);
}

// Called with the lock held.
bool OAuth2Tokens::grant(const std::string& form) {
    accessToken_.reset();
    if (account_.problem) {
        lastError_ = account_.problem;
        return false;
    }
    RestRequest request;
    request.method = "POST";
    request.url = account_.tokenUrl;
    request.headers = {"Content-Type: application/x-www-form-urlencoded", "Accept: application/json"};
    request.text = form + "&client_id=" + textutil::percentEncoded(account_.clientId) +
                   "&client_secret=" + textutil::percentEncoded(account_.clientSecret);
    request.anonymous = true;
    const RestReply reply = client_.perform(request);
    std::string error;
    const auto tokens = reply.isSuccess() ? OAuth2Grant::read(reply.body, error) : std::nullopt;
    if (!tokens) {
        lastError_ = reply.isSuccess() ? error : OAuth2Grant::errorText(reply);
        SH_LOG("The token request failed: {}", *lastError_);
        return false;
    }
    if (tokens->refreshToken) {
        Supervisor::shared().lowLevelStorePreferencesData(PlistValue(*tokens->refreshToken), account_.refreshTokenKey);
    } else if (!storedRefreshToken()) {
        lastError_ = "The reply holds no refresh token";
        return false;
    }
    accessToken_ = tokens->accessToken;
    lastError_.reset();
    SH_LOG("User signed in to {}; the access token lasts {} seconds", account_.serviceName,
           tokens->expiresIn.value_or(0));
    return true;
}

void OAuth2Tokens::revoke() {
    std::lock_guard lock(mutex_);
    accessToken_.reset();
    Supervisor::shared().lowLevelStorePreferencesData(
        *account_.loggedOutValue ? PlistValue(account_.loggedOutValue) : PlistValue(), account_.refreshTokenKey);
}

std::optional<std::string> OAuth2Tokens::lastError() const {
    std::lock_guard lock(mutex_);
    return lastError_;
}

}  // namespace stowhaven
