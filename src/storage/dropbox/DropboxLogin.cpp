#include "storage/dropbox/DropboxLogin.h"

#include "core/Supervisor.h"
#include "platform/Log.h"
#include "storage/OAuthAnswer.h"
#include "storage/dropbox/DropboxApp.h"
#include "storage/dropbox/DropboxCredentials.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <openssl/evp.h>

#include <array>

namespace stowhaven {

namespace {

constexpr const char* kNonceKey = "dropbox.sync.nonce";

// A random (version 4) UUID in its usual text form.
std::optional<std::string> newNonce() {
    auto random = loginStateBytes();
    if (!random) return std::nullopt;
    auto& bytes = *random;
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0f) | 0x40);
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3f) | 0x80);
    const std::string hex = fmt::format("{:02X}", fmt::join(bytes, ""));
    return fmt::format("{}-{}-{}-{}-{}", hex.substr(0, 8), hex.substr(8, 4), hex.substr(12, 4), hex.substr(16, 4),
                       hex.substr(20));
}

std::string sha1Hex(const std::string& text) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int length = 0;
    EVP_Digest(text.data(), text.size(), digest.data(), &length, EVP_sha1(), nullptr);
    return fmt::format("{:02x}", fmt::join(digest.begin(), digest.begin() + length, ""));
}

}  // namespace

std::optional<std::string> DropboxLogin::authorizationAddress(std::string& error) {
    const auto app = DropboxApp::fromEnvironment(error);
    if (!app) return std::nullopt;
    const auto nonce = newNonce();
    if (!nonce) {
        error = "No random nonce for the login";
        return std::nullopt;
    }
    Supervisor::shared().lowLevelStorePreferencesData(PlistValue(*nonce), kNonceKey);
    return fmt::format("{}/1/connect_login?k={}&s={}&state={}&easl=1", app->webHost, app->key, sha1Hex(app->secret),
                       *nonce);
}

std::optional<std::string> DropboxLogin::finish(const std::string& answer) {
    std::string error;
    const auto app = DropboxApp::fromEnvironment(error);
    if (!app) return error;
    const OAuthAnswer parsed = OAuthAnswer::parse(answer);
    const std::string scheme = "db-" + app->key + "://1/";
    if (!parsed.address.empty() && parsed.address != scheme + "connect" && parsed.address != scheme + "cancel") {
        return "<" + parsed.address + "> is no answer of Dropbox to this app";
    }
    const auto nonce = Supervisor::shared().lowLevelGetStringPreferencesDataForKey(kNonceKey);
    if (!nonce || parsed.parameter("state") != nonce) {
        return std::string("The answer belongs to another login: open the address again");
    }
    if (parsed.address == scheme + "cancel") return std::string("The access was refused on the Dropbox page");
    const auto token = parsed.parameter("oauth_token");
    const auto tokenSecret = parsed.parameter("oauth_token_secret");
    if (!token || !tokenSecret || token->empty() || tokenSecret->empty()) {
        return std::string("The answer holds no token: hand back the whole address the Dropbox page sent you to");
    }
    Supervisor& supervisor = Supervisor::shared();
    DropboxCredentials{parsed.parameter("uid").value_or(""), *token, *tokenSecret}.storeAsCurrent(app->key);
    helper_ = DropboxHelper::createDropboxHelper();
    if (!helper_->loadAccountInfos()) {
        const std::string refusal = helper_->errorMessage().value_or("The account can't be read");
        DropboxHelper::unlink();
        return refusal;
    }
    supervisor.lowLevelStorePreferencesData(PlistValue(), kNonceKey);
    supervisor.setStorageToDropbox();
    supervisor.persistStorageType();
    SH_LOG("Logged in to Dropbox as <{}>", helper_->accountName());
    return std::nullopt;
}

std::string DropboxLogin::accountName() { return helper_ ? helper_->accountName() : std::string(); }

// Dropbox may be the stored choice while this run has given way to local storage.
void DropboxLogin::logOut() {
    DropboxHelper::unlink();
    leaveLoggedOutEngine(StorageType::Dropbox);
}

}  // namespace stowhaven
