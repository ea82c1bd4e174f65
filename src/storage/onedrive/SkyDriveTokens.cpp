#include "storage/onedrive/SkyDriveTokens.h"

#include "core/Supervisor.h"
#include "core/Text.h"
#include "net/OAuth2Grant.h"
#include "platform/Log.h"
#include "platform/Platform.h"

namespace stowhaven {

namespace {

std::optional<std::string> stored(const char* key) {
    auto value = Supervisor::shared().lowLevelGetStringPreferencesDataForKey(key);
    if (!value || value->empty()) return std::nullopt;
    return value;
}

Date now() { return Platform::current().clock().date(); }

}  // namespace

SkyDriveTokens::SkyDriveTokens(SkyDriveService service) : service_(std::move(service)) {
    client_.addSecret(service_.app.clientSecret.value_or(""));
}

bool SkyDriveTokens::hasAccessToken() const { return stored(kAccessTokenKey).has_value(); }

std::optional<std::string> SkyDriveTokens::header() {
    std::lock_guard lock(mutex_);
    const auto expiry = Supervisor::shared().lowLevelGetDatePreferencesDataForKey(kExpiryDateKey);
    if (stored(kAccessTokenKey) && (!expiry || *expiry <= now())) {
        SH_LOG("The access token has expired: refreshing it...");
        if (const auto token = stored(kRefreshTokenKey))
            grant("refresh_token", "&refresh_token=" + textutil::percentEncoded(*token));
    }
    const auto token = stored(kAccessTokenKey);
    if (!token) return std::nullopt;
    return "bearer " + *token;
}

bool SkyDriveTokens::refresh() {
    std::lock_guard lock(mutex_);
    const auto token = stored(kRefreshTokenKey);
    if (!token) {
        lastError_ = "Not logged in to OneDrive";
        return false;
    }
    SH_LOG("Refreshing the access token...");
    return grant("refresh_token", "&refresh_token=" + textutil::percentEncoded(*token));
}

bool SkyDriveTokens::exchangeCode(const std::string& code) {
    std::lock_guard lock(mutex_);
    return grant("authorization_code", "&code=" + textutil::percentEncoded(code));
}

// The token request is a GET whose query holds the app's credentials, and no Authorization.
bool SkyDriveTokens::grant(const std::string& grantType, const std::string& parameters) {
    if (const auto problem = service_.problem()) {
        lastError_ = problem;
        return false;
    }
    RestRequest request;
    request.url = service_.tokenUrl() + "?client_id=" + textutil::percentEncoded(*service_.app.clientId) +
                  "&redirect_uri=" + textutil::percentEncoded(service_.redirectUri()) +
                  "&client_secret=" + textutil::percentEncoded(*service_.app.clientSecret) +
                  "&grant_type=" + grantType + parameters;
    request.anonymous = true;
    const RestReply reply = client_.perform(request);
    std::string error;
    auto tokens = reply.isSuccess() ? OAuth2Grant::read(reply.body, error) : std::nullopt;
    if (!tokens) {
        lastError_ = reply.isSuccess() ? error : OAuth2Grant::errorText(reply);
        SH_LOG("The token request failed: {}", *lastError_);
        return false;
    }
    storeTokenInfos(tokens->accessToken, tokens->refreshToken,
                    now().dateByAddingTimeInterval(static_cast<double>(tokens->expiresIn.value_or(0))));
    lastError_.reset();
    return true;
}

void SkyDriveTokens::storeTokenInfos(const std::string& accessToken, const std::optional<std::string>& refreshToken,
                                     Date expiry) {
    Supervisor& supervisor = Supervisor::shared();
    supervisor.lowLevelStorePreferencesData(PlistValue(accessToken), kAccessTokenKey);
    // A refresh that brings no new refresh token leaves the one held good.
    if (refreshToken) supervisor.lowLevelStorePreferencesData(PlistValue(*refreshToken), kRefreshTokenKey);
    supervisor.lowLevelStorePreferencesData(PlistValue(expiry), kExpiryDateKey);
    SH_LOG("\tTokens stored, good until {}", expiry.description());
}

void SkyDriveTokens::removeAllTokens() {
    std::lock_guard lock(mutex_);
    SH_LOG("Clearing tokens...");
    unlink();
}

std::optional<std::string> SkyDriveTokens::lastError() const {
    std::lock_guard lock(mutex_);
    return lastError_;
}

void SkyDriveTokens::unlink() {
    Supervisor& supervisor = Supervisor::shared();
    for (const char* key : {kAccessTokenKey, kRefreshTokenKey, kExpiryDateKey})
        supervisor.lowLevelStorePreferencesData(PlistValue(), key);
}

}  // namespace stowhaven
