#include "storage/gdrive/GDriveLogin.h"

#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/Log.h"
#include "storage/OAuthCode.h"
#include "storage/gdrive/GDriveCodeChallenge.h"
#include "storage/gdrive/GDriveHelper.h"
#include "storage/gdrive/GDriveService.h"
#include "storage/gdrive/GDriveTokens.h"

namespace stowhaven {

namespace {

// The program sees only the files it made.
constexpr const char* kScope = "https://www.googleapis.com/auth/drive.file";

}  // namespace

std::optional<std::string> GDriveLogin::authorizationAddress(std::string& error) {
    const GDriveService service = GDriveService::fromEnvironment();
    if (const auto problem = service.problem()) {
        error = *problem;
        return std::nullopt;
    }
    const auto state = newLoginState(kLoginStateKey);
    const auto proof = GDriveCodeChallenge::make();
    if (!state || !proof) {
        error = "No random state for the login";
        return std::nullopt;
    }
    Supervisor::shared().lowLevelStorePreferencesData(PlistValue(proof->verifier), kLoginVerifierKey);
    return service.authorizeUrl() + "?client_id=" + textutil::percentEncoded(*service.app.clientId) +
           "&redirect_uri=" + textutil::percentEncoded(GDriveTokens::kRedirectAddress) +
           "&response_type=code&scope=" + textutil::percentEncoded(kScope) + "&state=" + *state +
           "&code_challenge=" + proof->challenge + "&code_challenge_method=S256";
}

std::optional<std::string> GDriveLogin::finish(const std::string& answer) {
    const OAuthCode answered = OAuthCode::of(answer, kLoginStateKey, "Google Drive");
    if (!answered.code) return answered.error;
    Supervisor& supervisor = Supervisor::shared();
    const auto verifier = supervisor.lowLevelGetStringPreferencesDataForKey(kLoginVerifierKey);
    if (!verifier || verifier->empty()) return "The login's address wasn't made here: open the address again";
    helper_ = GDriveHelper::createGDriveHelper();
    if (const auto error = helper_->logInWithCode(*answered.code, *verifier)) return error;
    supervisor.persistStorageType();
    supervisor.lowLevelStorePreferencesData(PlistValue(), kLoginStateKey);
    supervisor.lowLevelStorePreferencesData(PlistValue(), kLoginVerifierKey);
    SH_LOG("Logged in to Google Drive as <{}>", helper_->accountName());
    return std::nullopt;
}

void GDriveLogin::logOut() {
    GDriveHelper::unlink();
    leaveLoggedOutEngine(StorageType::GDrive);
}

std::string GDriveLogin::accountName() { return helper_ ? helper_->accountName() : std::string(); }

}  // namespace stowhaven
