#include "support/OneDriveEmulator.h"

#include "core/Text.h"

#include <nlohmann/json.hpp>

namespace stowhaven::test {

namespace {

// The service's registrations: a client id of 16 upper-case hexadecimal characters and a
// secret of 32 letters and digits.
constexpr std::size_t kClientIdLength = 16;
constexpr std::size_t kClientSecretLength = 32;

}  // namespace

OneDriveEmulator::OneDriveEmulator()
    : clientId_(randomText("0123456789ABCDEF", kClientIdLength)),
      clientSecret_(randomText("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789", kClientSecretLength)),
      process_(std::make_unique<EmulatorProcess>(
          "onedrive_emulator.py", folder_.path(),
          std::vector<std::string>{"--client-id", clientId_, "--client-secret", clientSecret_})) {}

OneDriveEmulator::~OneDriveEmulator() = default;

std::vector<std::pair<std::string, std::string>> OneDriveEmulator::variables() const {
    return {{"STOWHAVEN_ONEDRIVE_API_URL", address()},
            {"STOWHAVEN_ONEDRIVE_LOGIN_URL", address()},
            {"STOWHAVEN_ONEDRIVE_CLIENT_ID", clientId_},
            {"STOWHAVEN_ONEDRIVE_CLIENT_SECRET", clientSecret_}};
}

std::string OneDriveEmulator::environment() const {
    std::string prefix;
    for (const auto& [name, value] : variables()) prefix += name + "=" + value + " ";
    return prefix;
}

void OneDriveEmulator::exportEnvironment() {
    auto& scope = exported_.emplace();
    for (const auto& [name, value] : variables()) scope.set(name, value);
}

std::vector<std::string> OneDriveEmulator::paths() const {
    const auto tree = nlohmann::json::parse(process_->control("GET", "tree"));
    std::vector<std::string> paths;
    for (const auto& entry : tree["entries"]) {
        paths.push_back(entry["path"].get<std::string>() + (entry["type"] == "folder" ? "/" : ""));
    }
    return paths;
}

void OneDriveEmulator::addFolder(const std::string& path) const {
    process_->control("POST", "folder?path=" + textutil::percentEncoded(path));
}

void OneDriveEmulator::addFile(const std::string& path, const std::string& bytes) const {
    process_->control("POST", "file?path=" + textutil::percentEncoded(path), bytes);
}

void OneDriveEmulator::injectFault(const std::string& name, int count, const std::string& pathPrefix) const {
    process_->control("POST", "fault?name=" + textutil::percentEncoded(name) + "&count=" + std::to_string(count) +
                                  "&path=" + textutil::percentEncoded(pathPrefix));
}

void OneDriveEmulator::injectThrottling(int seconds, int count, const std::string& pathPrefix) const {
    process_->control("POST", "fault?name=status_429&count=" + std::to_string(count) + "&path=" +
                                  textutil::percentEncoded(pathPrefix) + "&seconds=" + std::to_string(seconds));
}

std::string OneDriveEmulator::grant(const std::string& authorizationAddress) const {
    return process_->redirectOf(authorizationAddress);
}

OneDriveTokens OneDriveEmulator::issueTokens() const {
    const auto pair = nlohmann::json::parse(process_->control("POST", "token"));
    return {pair["access_token"].get<std::string>(), pair["refresh_token"].get<std::string>(),
            pair["expires_in"].get<std::int64_t>()};
}

void OneDriveEmulator::expireAccessToken() const { process_->control("POST", "expire_access_token"); }

}  // namespace stowhaven::test
