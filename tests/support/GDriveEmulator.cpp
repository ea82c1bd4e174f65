#include "support/GDriveEmulator.h"

#include "core/Text.h"

#include <nlohmann/json.hpp>

namespace stowhaven::test {

namespace {

constexpr const char* kDigits = "0123456789";
constexpr const char* kLowerAlphanumerics = "abcdefghijklmnopqrstuvwxyz0123456789";
constexpr const char* kAlphanumerics = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";

}  // namespace

// An app registration of the shape the service hands out: a project number, a dash, 32
// letters and digits and the fixed suffix; a secret of 24 letters and digits.
GDriveEmulator::GDriveEmulator()
    : clientId_(randomText(kDigits, 13) + "-" + randomText(kLowerAlphanumerics, 32) + ".apps.googleusercontent.com"),
      clientSecret_(randomText(kAlphanumerics, 24)),
      process_(std::make_unique<EmulatorProcess>(
          "gdrive_emulator.py", folder_.path(),
          std::vector<std::string>{"--client-id", clientId_, "--client-secret", clientSecret_})) {}

GDriveEmulator::~GDriveEmulator() = default;

std::vector<std::pair<std::string, std::string>> GDriveEmulator::variables() const {
    return {{"STOWHAVEN_GDRIVE_API_URL", address()},
            {"STOWHAVEN_GDRIVE_UPLOAD_URL", address()},
            {"STOWHAVEN_GDRIVE_AUTH_URL", address()},
            {"STOWHAVEN_GDRIVE_CLIENT_ID", clientId_},
            {"STOWHAVEN_GDRIVE_CLIENT_SECRET", clientSecret_}};
}

std::string GDriveEmulator::environment() const {
    std::string prefix;
    for (const auto& [name, value] : variables()) prefix += name + "=" + value + " ";
    return prefix;
}

void GDriveEmulator::exportEnvironment() {
    auto& scope = exported_.emplace();
    for (const auto& [name, value] : variables()) scope.set(name, value);
}

std::vector<std::string> GDriveEmulator::paths() const {
    const auto tree = nlohmann::json::parse(process_->control("GET", "tree"));
    std::vector<std::string> paths;
    for (const auto& entry : tree["entries"]) {
        const bool isFolder = entry["mimeType"] == "application/vnd.google-apps.folder";
        paths.push_back(entry["path"].get<std::string>() + (isFolder ? "/" : ""));
    }
    return paths;
}

void GDriveEmulator::addFolder(const std::string& path) const {
    process_->control("POST", "folder?path=" + textutil::percentEncoded(path));
}

void GDriveEmulator::addFile(const std::string& path, const std::string& bytes) const {
    process_->control("POST", "file?path=" + textutil::percentEncoded(path), bytes);
}

void GDriveEmulator::injectFault(const std::string& name, int count, const std::string& pathPrefix, int skip) const {
    process_->control("POST", "fault?name=" + textutil::percentEncoded(name) + "&count=" + std::to_string(count) +
                                  "&path=" + textutil::percentEncoded(pathPrefix) + "&skip=" + std::to_string(skip));
}

std::string GDriveEmulator::grant(const std::string& authorizationAddress) const {
    return process_->redirectOf(authorizationAddress);
}

GDriveTokens GDriveEmulator::issueTokens() const {
    const auto pair = nlohmann::json::parse(process_->control("POST", "token"));
    return {pair["access_token"].get<std::string>(), pair["refresh_token"].get<std::string>()};
}

void GDriveEmulator::expireAccessToken() const { process_->control("POST", "expire_access_token"); }

}  // namespace stowhaven::test
