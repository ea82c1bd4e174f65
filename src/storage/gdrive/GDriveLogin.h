#pragma once

#include "storage/OAuthLogin.h"

#include <memory>
#include <optional>
#include <string>

namespace stowhaven {

class GDriveHelper;

// The terminal login to Google Drive: the authorisation page's address, with a state kept in
// "gdrive_login_state" and the verifier of its proof key in "gdrive_login_verifier", and the
// code the user brings back from the page's redirect to 127.0.0.1 (alone, or the whole
// address), traded for the account's tokens.
class GDriveLogin final : public OAuthLogin {
public:
    static constexpr const char* kLoginStateKey = "gdrive_login_state";
    static constexpr const char* kLoginVerifierKey = "gdrive_login_verifier";

    std::optional<std::string> authorizationAddress(std::string& error) override;
    std::optional<std::string> finish(const std::string& answer) override;
    std::string accountName() override;
    void logOut() override;

private:
    std::shared_ptr<GDriveHelper> helper_;
};

}  // namespace stowhaven
