#include "storage/box/BoxLogin.h"

#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/Log.h"
#include "storage/OAuthCode.h"
#include "storage/box/BoxHelper.h"
#include "storage/box/BoxService.h"

namespace stowhaven {

namespace {

// Where the page sends the user once they have agreed; no server needs to answer there.
constexpr const char* kRedirectAddress = "http://localhost";

}  // namespace

std::optional<std::string> BoxLogin::authorizationAddress(std::string& error) {
    const BoxService service = BoxService::fromEnvironment();
    if (const auto problem = service.problem()) {
        error = *problem;
        return std::nullopt;
    }
    const auto state = newLoginState(kLoginStateKey);
    if (!state) {
        error = "No random state for the login";
        return std::nullopt;
    }
    return service.authorizeUrl() + "?response_type=code&client_id=" + textutil::percentEncoded(*service.app.clientId) +
           "&redirect_uri=" + textutil::percentEncoded(kRedirectAddress) + "&state=" + *state;
}

std::optional<std::string> BoxLogin::finish(const std::string& answer) {
    const OAuthCode answered = OAuthCode::of(answer, kLoginStateKey, "Box");
    if (!answered.code) return answered.error;
    helper_ = BoxHelper::createBoxHelper();
    if (const auto error = helper_->logInWithCode(*answered.code)) return error;
    Supervisor& supervisor = Supervisor::shared();
    supervisor.persistStorageType();
    supervisor.lowLevelStorePreferencesData(PlistValue(), kLoginStateKey);
    SH_LOG("Logged in to Box as <{}>", helper_->accountName());
    return std::nullopt;
}

void BoxLogin::logOut() {
    BoxHelper::unlink();
    leaveLoggedOutEngine(StorageType::Box);
}

std::string BoxLogin::accountName() { return helper_ ? helper_->accountName() : std::string(); }

}  // namespace stowhaven
