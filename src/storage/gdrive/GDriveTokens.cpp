#include "storage/gdrive/GDriveTokens.h"

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

GDriveTokens::GDriveTokens(GDriveService service) : service_(std::move(service)) {
    client_.addSecret(service_.clientSecret.value_or(""));
}

std::optional<std::string> GDriveTokens::storedRefreshToken() {
    auto token = Supervisor::shared().lowLevelGetStringPreferencesDataForKey(kRefreshTokenKey);
    if (!token || token->empty()) return std::nullopt;
    return token;
}

std::optional<std::string> GDriveTokens::header() {
    std::lock_guard lock(mutex_);
    if (!accessToken_) {
        if (const auto token = storedRefreshToken()) grant(refreshForm(*token));
    }
    if (!accessToken_) return std::nullopt;
    return "Bearer " + *accessToken_;
}

bool GDriveTokens::refresh() {
    std::lock_guard lock(mutex_);
    const auto token = storedRefreshToken();
    if (!token) {
        lastError_ = "Not logged in to Google Drive";
        return false;
    }
    SH_LOG("Refreshing the access token...");
    return grant(refreshForm(*token));
}

bool GDriveTokens::exchangeCode(const std::string& code, const std::string& verifier) {
    std::lock_guard lock(mutex_);
    return grant("grant_type=authorization_code&code=" + textutil::percentEncoded(code) + "&code_verifier=" +
                 textutil::percentEncoded(verifier) + "&redirect_uri=" + textutil::percentEncoded(kRedirectAddress));
}

// Called with the lock held. A grant that brings a refresh token (a login's) stores it.
bool GDriveTokens::grant(const std::string& form) {
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
    const auto tokens = reply.isSuccess() ? OAuth2Grant::read(reply.body, error) : std::nullopt;
    if (!tokens) {
        lastError_ = reply.isSuccess() ? error : OAuth2Grant::errorText(reply);
        SH_LOG("The token request failed: {}", *lastError_);
        return false;
    }
    if (tokens->refreshToken) {
        Supervisor::shared().lowLevelStorePreferencesData(PlistValue(*tokens->refreshToken), kRefreshTokenKey);
    } else if (!storedRefreshToken()) {
        lastError_ = "The reply holds no refresh token";
        return false;
    }
    accessToken_ = tokens->accessToken;
    lastError_.reset();
    SH_LOG("Expiration date: in {} seconds", tokens->expiresIn.value_or(0));
    return true;
}

void GDriveTokens::forget() {
    std::lock_guard lock(mutex_);
    accessToken_.reset();
}

std::optional<std::string> GDriveTokens::lastError() const {
    std::lock_guard lock(mutex_);
    return lastError_;
}

}  // namespace stowhaven
