#pragma once

#include "net/RestClient.h"
#include "storage/dropbox/DropboxApp.h"

#include <optional>
#include <string>

namespace stowhaven {

// The token pair that the service lent the program for one of its users, kept in the settings
// under "kDBDropboxSavedCredentials": an array of {"app_key", "uid", "oauth_token",
// "oauth_token_secret"}, the first being the user in use.
struct DropboxCredentials {
    std::string uid;
    std::string token;
    std::string tokenSecret;

    // The user in use for the app of that key; none when unlinked, or when the pair kept
    // belongs to another app.
    static std::optional<DropboxCredentials> saved(const std::string& appKey);
    // Puts the pair first, as the user in use, in place of any other of the same user.
    void storeAsCurrent(const std::string& appKey) const;
    // Forgets every user.
    static void unlinkAll();
};

// The OAuth 1 PLAINTEXT header: the app's key, and its secret and the token's secret as the
// signature. It needs neither nonce nor timestamp, and goes out unchanged on every request.
class DropboxAuthorization final : public RestAuthorization {
public:
    DropboxAuthorization(const DropboxApp& app, const DropboxCredentials& credentials);
    std::optional<std::string> header() override { return header_; }

private:
    std::string header_;
};

}  // namespace stowhaven
