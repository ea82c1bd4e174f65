#include "support/SugarSyncEmulator.h"

#include "core/Text.h"

#include <nlohmann/json.hpp>

namespace stowhaven::test {

namespace {

constexpr const char* kBase64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
// The app's keys are as long as the service's.
constexpr std::size_t kAccessKeyLength = 27;
constexpr std::size_t kPrivateKeyLength = 43;
constexpr const char* kMagicBriefcase = "/Magic Briefcase";

}  // namespace

SugarSyncEmulator::SugarSyncEmulator()
    : accessKey_(randomText(kBase64, kAccessKeyLength)),
      privateKey_(randomText(kBase64, kPrivateKeyLength)),
      user_("owner@example.com"),
      password_("pa ss]]><w&rd " + randomText("abcdefghijklmnopqrstuvwxyz0123456789", 12)),
      process_(std::make_unique<EmulatorProcess>(
          "sugarsync_emulator.py", folder_.path(),
          std::vector<std::string>{"--access-key", accessKey_, "--private-key", privateKey_, "--user", user_,
                                   "--password", password_})),
      variables_({{"STOWHAVEN_SUGARSYNC_API_URL", address()},
                  {"STOWHAVEN_SUGARSYNC_ACCESS_KEY", accessKey_},
                  {"STOWHAVEN_SUGARSYNC_PRIVATE_KEY", privateKey_}}) {}

SugarSyncEmulator::~SugarSyncEmulator() = default;

std::vector<std::string> SugarSyncEmulator::paths() const {
    const auto tree = nlohmann::json::parse(process_->control("GET", "tree"));
    const std::string briefcase = std::string(kMagicBriefcase) + "/";
    std::vector<std::string> paths;
    for (const auto& entry : tree["entries"]) {
        if (!entry["path"].is_string()) continue;
        const std::string path = entry["path"].get<std::string>();
        const bool isFolder = entry["type"] == "folder";
        if (!path.starts_with(briefcase) || (!isFolder && !entry["presentOnServer"].get<bool>())) continue;
        const std::string inside = path.substr(briefcase.size() - 1);
        paths.push_back(textutil::percentDecoded(inside).value_or(inside) + (isFolder ? "/" : ""));
    }
    return paths;
}

void SugarSyncEmulator::addFolder(const std::string& path) const {
    process_->control("POST", "folder?path=" + textutil::percentEncoded(kMagicBriefcase + path));
}

void SugarSyncEmulator::addFile(const std::string& path, const std::string& bytes) const {
    process_->control("POST", "file?path=" + textutil::percentEncoded(kMagicBriefcase + path), bytes);
}

}  // namespace stowhaven::test
