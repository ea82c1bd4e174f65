#include "storage/sugarsync/SugarSyncSession.h"

#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "storage/sugarsync/SugarSyncKeys.h"
#include "storage/sugarsync/SugarSyncReplies.h"
#include "storage/sugarsync/SugarSyncRetries.h"
#include "storage/sugarsync/SugarSyncXml.h"

namespace stowhaven {

namespace {

// The pause before a login whose reply gave no expiry is tried again.
constexpr std::chrono::seconds kThrottle{5};

}  // namespace

SugarSyncSession::SugarSyncSession(SugarSyncService service, SugarSyncRetries& retries)
    : service_(std::move(service)), retries_(retries), client_(RetryPolicy{1, std::chrono::seconds(0)}) {
    client_.addSecret(service_.privateKey.value_or(""));
}

std::optional<std::string> SugarSyncSession::header() {
    std::lock_guard lock(mutex_);
    const Date now = Platform::current().clock().date();
    if (token_ && expiration_ && expiration_->timeIntervalSinceDate(now) < kRenewalMargin) {
        SH_LOG("Refreshing token expiration...");
        authorize();
    }
    return token_;
}

bool SugarSyncSession::refresh() {
    std::lock_guard lock(mutex_);
    if (user_.empty() || password_.empty()) return false;
    SH_LOG("Refreshing token expiration...");
    return authorize();
}

bool SugarSyncSession::logIn(const std::string& user, const std::string& password) {
    std::lock_guard lock(mutex_);
    user_ = textutil::trimmed(user);
    password_ = textutil::trimmed(password);
    if (user_.empty() || password_.empty()) {
        lastError_ = "SugarSync needs a login and a password";
        return false;
    }
    return authorize();
}

// A renewal keeps the stored expiry in step, once a login is stored.
bool SugarSyncSession::authorize() {
    token_.reset();
    expiration_.reset();
    if (const auto problem = service_.problem()) {
        lastError_ = problem;
        return false;
    }
    RestRequest request;
    request.method = "POST";
    request.url = service_.url("/authorization");
    request.headers = {"Content-Type: application/xml; charset=UTF-8", "Accept: application/xml"};
    request.text = SugarSyncXml::authRequest(user_, password_, *service_.accessKey, *service_.privateKey);
    request.anonymous = true;
    for (;;) {
        const RestReply reply = client_.perform(request);
        std::string error;
        const auto location = reply.header("Location");
        auto granted = reply.isSuccess() ? SugarSyncReplies::authorization(reply.body, error) : std::nullopt;
        if (!reply.isSuccess()) {
            error = SugarSyncReplies::errorText(request.url, reply);
        } else if (granted && (!location || location->empty())) {
            error = "The authorization reply holds no token";
            granted.reset();
        }
        if (!granted) {
            SH_LOG("{}", error);
            lastError_ = error;
            if (retries_.failed(error, reply)) continue;
            return false;
        }
        retries_.readReply();
        if (!granted->expiration) {
            lastError_ = "The authorization reply gives no expiry";
            if (retries_.failed(*lastError_, reply)) {
                SH_LOG("Throttling: Retry {}/{} after {} seconds", retries_.count(), SugarSyncRetries::kMaximum,
                       kThrottle.count());
                if (SugarSyncRetries::waitUnlessCanceled(kThrottle)) continue;
            }
            return false;
        }
        SH_LOG("tokenExpirationDate: {}", granted->expiration->description());
        token_ = *location;
        expiration_ = granted->expiration;
        lastError_.reset();
        Supervisor& supervisor = Supervisor::shared();
        if (supervisor.lowLevelGetStringPreferencesDataForKey(SugarSyncKeys::kLogin)) {
            supervisor.lowLevelStorePreferencesData(PlistValue(*expiration_), SugarSyncKeys::kTokenExpirationDate);
        }
        return true;
    }
}

void SugarSyncSession::logOut() {
    std::lock_guard lock(mutex_);
    token_.reset();
    expiration_.reset();
    user_.clear();
    password_.clear();
}

bool SugarSyncSession::isLoggedIn() const {
    std::lock_guard lock(mutex_);
    return token_.has_value();
}

std::string SugarSyncSession::userName() const {
    std::lock_guard lock(mutex_);
    return user_;
}

std::optional<Date> SugarSyncSession::expiration() const {
    std::lock_guard lock(mutex_);
    return expiration_;
}

std::optional<std::string> SugarSyncSession::lastError() const {
    std::lock_guard lock(mutex_);
    return lastError_;
}

}  // namespace stowhaven
