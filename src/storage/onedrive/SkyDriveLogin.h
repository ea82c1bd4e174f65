#pragma once

#include "storage/OAuthLogin.h"

#include <memory>
#include <optional>
#include <string>

namespace stowhaven {

class SkyDriveHelper;

// The terminal login to OneDrive: the authorisation page's address, with a state kept in the
// setting "skydrive_login_state", and the code the user brings back from the page's redirect
// to the service's desktop address (alone, or the whole address), traded for the account's
// tokens; the login then finds or makes the product and device folders.
class SkyDriveLogin final : public OAuthLogin {
public:
    static constexpr const char* kLoginStateKey = "skydrive_login_state";

    std::optional<std::string> authorizationAddress(std::string& error) override;
    std::optional<std::string> finish(const std::string& answer) override;
    std::string accountName() override;
    void logOut() override;

private:
    std::shared_ptr<SkyDriveHelper> helper_;
};

}  // namespace stowhaven
