#pragma once

#include "storage/OAuthLogin.h"

#include <memory>
#include <optional>
#include <string>

namespace stowhaven {

class BoxHelper;

// The terminal login to Box: the authorisation page's address, with a state kept in the
// setting "box_api_login_state", and the code the user brings back from the page's redirect
// (alone, or the whole address), traded for the account's tokens.
class BoxLogin final : public OAuthLogin {
public:
    static constexpr const char* kLoginStateKey = "box_api_login_state";

    std::optional<std::string> authorizationAddress(std::string& error) override;
    std::optional<std::string> finish(const std::string& answer) override;
    std::string accountName() override;
    void logOut() override;

private:
    std::shared_ptr<BoxHelper> helper_;
};

}  // namespace stowhaven
