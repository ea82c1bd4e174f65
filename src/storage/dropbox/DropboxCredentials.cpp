#include "storage/dropbox/DropboxCredentials.h"

#include "core/Supervisor.h"
#include "platform/Log.h"

#include <fmt/format.h>

namespace stowhaven {

namespace {

constexpr const char* kSavedCredentialsKey = "kDBDropboxSavedCredentials";

const std::string* member(const PlistValue& entry, const char* name) {
    const auto* dictionary = entry.asDictionary();
    return dictionary ? stringForKey(*dictionary, name) : nullptr;
}

}  // namespace

std::optional<DropboxCredentials> DropboxCredentials::saved(const std::string& appKey) {
    const auto users = Supervisor::shared().lowLevelGetArrayPreferencesDataForKey(kSavedCredentialsKey);
    if (!users || users->empty()) return std::nullopt;
    const PlistValue& first = users->front();
    const std::string* key = member(first, "app_key");
    const std::string* uid = member(first, "uid");
    const std::string* token = member(first, "oauth_token");
    const std::string* secret = member(first, "oauth_token_secret");
    if (!key || !uid || !token || !secret || token->empty() || secret->empty()) {
        SH_LOG("The saved credentials are incomplete");
        return std::nullopt;
    }
    if (*key != appKey) {
        SH_LOG("The saved credentials belong to another app key");
        return std::nullopt;
    }
    return DropboxCredentials{*uid, *token, *secret};
}

void DropboxCredentials::storeAsCurrent(const std::string& appKey) const {
    Supervisor& supervisor = Supervisor::shared();
    PlistValue::Array users{PlistValue::Dictionary{
        {"app_key", appKey}, {"uid", uid}, {"oauth_token", token}, {"oauth_token_secret", tokenSecret}}};
    for (PlistValue& other :
         supervisor.lowLevelGetArrayPreferencesDataForKey(kSavedCredentialsKey).value_or(PlistValue::Array{})) {
        const std::string* otherUid = member(other, "uid");
        if (!otherUid || *otherUid != uid) users.push_back(std::move(other));
    }
    supervisor.lowLevelStorePreferencesData(std::move(users), kSavedCredentialsKey);
}

void DropboxCredentials::unlinkAll() {
    Supervisor::shared().lowLevelStorePreferencesData(PlistValue::Array{}, kSavedCredentialsKey);
    SH_LOG("Unlinked!");
}

DropboxAuthorization::DropboxAuthorization(const DropboxApp& app, const DropboxCredentials& credentials)
    : header_(fmt::format("OAuth oauth_version=\"1.0\", oauth_signature_method=\"PLAINTEXT\", "
                          "oauth_consumer_key=\"{}\", oauth_signature=\"{}&{}\", oauth_token=\"{}\"",
                          app.key, app.secret, credentials.tokenSecret, credentials.token)) {}

}  // namespace stowhaven
