#include "support/BoxEmulator.h"

#include "core/Text.h"

#include <nlohmann/json.hpp>

namespace stowhaven::test {

namespace {

constexpr std::size_t kCredentialLength = 32;

}  // namespace

BoxEmulator::BoxEmulator()
    : clientId_(randomText("abcdefghijklmnopqrstuvwxyz0123456789", kCredentialLength)),
      clientSecret_(randomText("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789", kCredentialLength)),
      process_(std::make_unique<EmulatorProcess>(
          "box_emulator.py", folder_.path(),
          std::vector<std::string>{"--client-id", clientId_, "--client-secret", clientSecret_})),
      variables_({{"STOWHAVEN_BOX_API_URL", address()},
                  {"STOWHAVEN_BOX_UPLOAD_URL", address()},
                  {"STOWHAVEN_BOX_AUTH_URL", address()},
                  {"STOWHAVEN_BOX_CLIENT_ID", clientId_},
                  {"STOWHAVEN_BOX_CLIENT_SECRET", clientSecret_}}) {}

BoxEmulator::~BoxEmulator() = default;

std::vector<std::string> BoxEmulator::paths() const {
    const auto tree = nlohmann::json::parse(process_->control("GET", "tree"));
    std::vector<std::string> paths;
    for (const auto& entry : tree["entries"]) {
        paths.push_back(entry["path"].get<std::string>() + (entry["type"] == "folder" ? "/" : ""));
    }
    return paths;
}

void BoxEmulator::addFolder(const std::string& path) const {
    process_->control("POST", "folder?path=" + textutil::percentEncoded(path));
}

void BoxEmulator::addFile(const std::string& path, const std::string& bytes) const {
    process_->control("POST", "file?path=" + textutil::percentEncoded(path), bytes);
}

void BoxEmulator::injectFault(const std::string& name, int count, const std::string& pathPrefix) const {
    process_->injectFault(name, count, pathPrefix);
}

std::string BoxEmulator::grant(const std::string& authorizationAddress) const {
    return process_->redirectOf(authorizationAddress);
}

BoxTokens BoxEmulator::issueTokens() const {
    const auto pair = nlohmann::json::parse(process_->control("POST", "token"));
    return {pair["access_token"].get<std::string>(), pair["refresh_token"].get<std::string>()};
}

void BoxEmulator::expireAccessToken() const { process_->expireAccessToken(); }

}  // namespace stowhaven::test
