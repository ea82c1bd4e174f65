#include "storage/onedrive/SkyDriveService.h"

#include "platform/Log.h"

namespace stowhaven {

namespace {

constexpr const char* kClientIdVariable = "STOWHAVEN_ONEDRIVE_CLIENT_ID";
constexpr const char* kClientSecretVariable = "STOWHAVEN_ONEDRIVE_CLIENT_SECRET";

ServiceBase resolved(const char* variable, std::string_view published) {
    ServiceBase base = ServiceBase::resolve(variable, published);
    if (base.error) SH_LOG("{}: {}", variable, *base.error);
    return base;
}

}  // namespace

SkyDriveService SkyDriveService::fromEnvironment() {
    return SkyDriveService{resolved("STOWHAVEN_ONEDRIVE_API_URL", "https://apis.live.net"),
                           resolved("STOWHAVEN_ONEDRIVE_LOGIN_URL", "https://login.live.com"),
                           appCredential(kClientIdVariable), appCredential(kClientSecretVariable)};
}

std::optional<std::string> SkyDriveService::problem() const {
    if (!clientId) return std::string("OneDrive needs the app's client id in ") + kClientIdVariable;
    if (!clientSecret) return std::string("OneDrive needs the app's client secret in ") + kClientSecretVariable;
    if (api.error) return api.error;
    if (login.error) return login.error;
    return std::nullopt;
}

}  // namespace stowhaven
