#include "storage/box/BoxLogin.h"

#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/Log.h"
#include "storage/OAuthAnswer.h"
#include "storage/box/BoxHelper.h"
#include "storage/box/BoxService.h"

#include <fmt/ranges.h>

#include <array>

namespace stowhaven {

namespace {

// Where the page sends the user once they have agreed; no server needs to answer there.
constexpr const char* kRedirectAddress = "http://localhost";

std::optional<std::string> newLoginState() {
    const auto bytes = loginStateBytes();
    if (!bytes) return std::nullopt;
    return fmt::format("{:02x}", fmt::join(*bytes, ""));
}

}  // namespace

std::optional<std::string> BoxLogin::authorizationAddress(std::string& error) {
    const BoxService service = BoxService::fromEnvironment();
    if (const auto problem = service.problem()) {
        error = *problem;
        return std::nullopt;
    }
    if (service.authorization.error) {
        error = *service.authorization.error;
        return std::nullopt;
    }
    const auto state = newLoginState();
    if (!state) {
        error = "No random state for the login";
        return std::nullopt;
    }
    Supervisor::shared().lowLevelStorePreferencesData(PlistValue(*state), kLoginStateKey);
    return service.authorizeUrl() + "?response_type=code&client_id=" + textutil::percentEncoded(*service.clientId) +
           "&redirect_uri=" + textutil::percentEncoded(kRedirectAddress) + "&state=" + *state;
}

std::optional<std::string> BoxLogin::finish(const std::string& answer) {
    const std::string text = textutil::trimmed(answer);
    std::string code = text;
    if (text.find('=') != std::string::npos) {
        const OAuthAnswer parsed = OAuthAnswer::parse(text);
        if (const auto refused = parsed.parameter("error")) {
            return parsed.parameter("error_description").value_or("Box refused: " + *refused);
        }
        const auto state = parsed.parameter("state");
        if (state && state != Supervisor::shared().lowLevelGetStringPreferencesDataForKey(kLoginStateKey)) {
            return std::string("The answer belongs to another login: open the address again");
        }
        code = parsed.parameter("code").value_or("");
    }
    if (code.empty()) return std::string("The answer holds no code");
    helper_ = BoxHelper::createBoxHelper();
    if (const auto error = helper_->logInWithCode(code)) return error;
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
