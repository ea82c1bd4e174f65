#include "support/DropboxEmulator.h"

#include "core/Text.h"

#include <nlohmann/json.hpp>

#include <utility>
#include <vector>

namespace stowhaven::test {

namespace {

// An app key and secret are 15 lower-case letters and digits, as the service hands them out.
constexpr const char* kCredentialAlphabet = "abcdefghijklmnopqrstuvwxyz0123456789";
constexpr std::size_t kCredentialLength = 15;

}  // namespace

DropboxEmulator::DropboxEmulator()
    : appKey_(randomText(kCredentialAlphabet, kCredentialLength)),
      appSecret_(randomText(kCredentialAlphabet, kCredentialLength)),
      process_(std::make_unique<EmulatorProcess>(
          "dropbox_emulator.py", folder_.path(),
          std::vector<std::string>{"--app-key", appKey_, "--app-secret", appSecret_})),
      variables_({{"STOWHAVEN_DROPBOX_API_URL", address()},
                  {"STOWHAVEN_DROPBOX_CONTENT_URL", address()},
                  {"STOWHAVEN_DROPBOX_WEB_URL", address()},
                  {"STOWHAVEN_DROPBOX_APP_KEY", appKey_},
                  {"STOWHAVEN_DROPBOX_APP_SECRET", appSecret_}}) {}

DropboxEmulator::~DropboxEmulator() = default;

void DropboxEmulator::injectFault(const std::string& name, int count, const std::string& pathPrefix) const {
    process_->injectFault(name, count, pathPrefix);
}

DropboxToken DropboxEmulator::issueToken() const {
    const auto pair = nlohmann::json::parse(process_->control("POST", "token"));
    return {pair["oauth_token"].get<std::string>(), pair["oauth_token_secret"].get<std::string>(),
            pair["uid"].get<std::string>()};
}

}  // namespace stowhaven::test
