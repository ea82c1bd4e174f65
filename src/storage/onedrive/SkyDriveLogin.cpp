#include "storage/onedrive/SkyDriveLogin.h"

#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/Log.h"
#include "storage/OAuthCode.h"
#include "storage/onedrive/SkyDriveHelper.h"
#include "storage/onedrive/SkyDriveService.h"

namespace stowhaven {

namespace {

// Reading and changing the account's files, and a refresh token that outlives the session.
constexpr const char* kScopes = "wl.signin%20wl.basic%20wl.skydrive%20wl.skydrive_update%20wl.offline_access";

}  // namespace

std::optional<std::string> SkyDriveLogin::authorizationAddress(std::string& error) {
    const SkyDriveService service = SkyDriveService::fromEnvironment();
    if (const auto problem = service.problem()) {
        error = *problem;
        return std::nullopt;
    }
    const auto state = newLoginState(kLoginStateKey);
    if (!state) {
        error = "No random state for the login";
        return std::nullopt;
    }
    // The page is opened in an ordinary browser, on any machine: its full-page form.
    return service.authorizeUrl() + "?client_id=" + textutil::percentEncoded(*service.app.clientId) +
           "&scope=" + kScopes + "&redirect_uri=" + textutil::percentEncoded(service.redirectUri()) +
           "&response_type=code&display=page&locale=en&state=" + *state;
}

std::optional<std::string> SkyDriveLogin::finish(const std::string& answer) {
    const OAuthCode answered = OAuthCode::of(answer, kLoginStateKey, "OneDrive");
    if (!answered.code) return answered.error;
    helper_ = SkyDriveHelper::createSkyDriveHelper();
    if (const auto error = helper_->logInWithCode(*answered.code)) return error;
    Supervisor& supervisor = Supervisor::shared();
    supervisor.persistStorageType();
    supervisor.lowLevelStorePreferencesData(PlistValue(), kLoginStateKey);
    SH_LOG("Logged in to OneDrive as <{}>", helper_->accountName());
    return std::nullopt;
}

void SkyDriveLogin::logOut() {
    SkyDriveHelper::unlink();
    leaveLoggedOutEngine(StorageType::SkyDrive);
}

std::string SkyDriveLogin::accountName() { return helper_ ? helper_->accountName() : std::string(); }

}  // namespace stowhaven
