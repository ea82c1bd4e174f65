#include "support/DropboxEmulator.h"

#include <nlohmann/json.hpp>

namespace stowhaven::test {

namespace {

// An app key and secret are 15 lower-case letters and digits, as the service hands them out.
constexpr const char* kCredentialAlphabet = "abcdefghijklmnopqrstuvwxyz0123456789";
constexpr std::size_t kCredentialLength = 15;

}  // namespace

DropboxEmulator::DropboxEmulator()
    : ServiceEmulator(
          "dropbox_emulator.py",
          {"STOWHAVEN_DROPBOX_API_URL", "STOWHAVEN_DROPBOX_CONTENT_URL", "STOWHAVEN_DROPBOX_WEB_URL"},
          {{"--app-key", "STOWHAVEN_DROPBOX_APP_KEY", randomText(kCredentialAlphabet, kCredentialLength)},
           {"--app-secret", "STOWHAVEN_DROPBOX_APP_SECRET", randomText(kCredentialAlphabet, kCredentialLength)}}) {}

DropboxToken DropboxEmulator::issueToken() const {
    const auto pair = nlohmann::json::parse(control("POST", "token"));
    return {pair["oauth_token"].get<std::string>(), pair["oauth_token_secret"].get<std::string>(),
            pair["uid"].get<std::string>()};
}

}  // namespace stowhaven::test
