#pragma once

#include "storage/OAuthLogin.h"
#include "storage/dropbox/DropboxHelper.h"

#include <memory>
#include <optional>
#include <string>

namespace stowhaven {

// The terminal login of Dropbox: the service's connect page, given the app key, the SHA-1 of
// the app secret and a nonce, sends the user to "db-<app key>://1/connect?oauth_token=...
// &oauth_token_secret=...&uid=...&state=<nonce>" once they agree, or to ".../1/cancel" when
// they don't. The user hands back that address, or its query; the tokens are kept once the
// account request proves them.
class DropboxLogin final : public OAuthLogin {
public:
    std::optional<std::string> authorizationAddress(std::string& error) override;
    std::optional<std::string> finish(const std::string& answer) override;
    std::string accountName() override;
    void logOut() override;

private:
    std::shared_ptr<DropboxHelper> helper_;
};

}  // namespace stowhaven
