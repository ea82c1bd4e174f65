#include "storage/onedrive/SkyDriveService.h"

namespace stowhaven {

SkyDriveService SkyDriveService::fromEnvironment() {
    return SkyDriveService{
        resolvedServiceHost("STOWHAVEN_ONEDRIVE_API_URL", "https://apis.live.net"),
        resolvedServiceHost("STOWHAVEN_ONEDRIVE_LOGIN_URL", "https://login.live.com"),
        OAuth2App::fromEnvironment("STOWHAVEN_ONEDRIVE_CLIENT_ID", "STOWHAVEN_ONEDRIVE_CLIENT_SECRET")};
}

std::optional<std::string> SkyDriveService::problem() const {
    if (auto missing = app.missingCredential("OneDrive")) return missing;
    if (api.error) return api.error;
    if (login.error) return login.error;
    return std::nullopt;
}

}  // namespace stowhaven
