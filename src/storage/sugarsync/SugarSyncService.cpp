#include "storage/sugarsync/SugarSyncService.h"

#include "platform/Log.h"

#include <algorithm>

namespace stowhaven {

namespace {

constexpr const char* kApiVariable = "STOWHAVEN_SUGARSYNC_API_URL";
constexpr const char* kAccessKeyVariable = "STOWHAVEN_SUGARSYNC_ACCESS_KEY";
constexpr const char* kPrivateKeyVariable = "STOWHAVEN_SUGARSYNC_PRIVATE_KEY";

}  // namespace

SugarSyncService SugarSyncService::fromEnvironment() {
    ServiceBase api = ServiceBase::resolve(kApiVariable, "https://api.sugarsync.com");
    if (api.error) SH_LOG("{}: {}", kApiVariable, *api.error);
    return SugarSyncService{std::move(api), appCredential(kAccessKeyVariable), appCredential(kPrivateKeyVariable)};
}

std::optional<std::string> SugarSyncService::problem() const {
    if (api.error) return std::string(kApiVariable) + " " + *api.error;
    if (!accessKey) return std::string("SugarSync needs the app's access key in ") + kAccessKeyVariable;
    if (!privateKey) return std::string("SugarSync needs the app's private key in ") + kPrivateKeyVariable;
    return std::nullopt;
}

// The base is "scheme://host[:port]" without a path: what follows it must start a path, or
// "https://api.example.com.evil.org/" and "https://api.example.com@evil.org/" would pass.
bool SugarSyncService::isOwnReference(const std::string& reference) const {
    if (api.url.empty() || reference.size() <= api.url.size() + 1) return false;
    if (reference.compare(0, api.url.size(), api.url) != 0 || reference[api.url.size()] != '/') return false;
    return std::all_of(reference.begin(), reference.end(), [](char c) { return c > 0x20 && c < 0x7f; });
}

}  // namespace stowhaven
