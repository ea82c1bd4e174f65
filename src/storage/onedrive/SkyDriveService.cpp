#include "storage/onedrive/SkyDriveService.h"

namespace stowhaven {

SkyDriveService SkyDriveService::fromEnvironment() {
    return SkyDriveService{
        resolvedServiceHost("STOWHAVEN_ONEDRIVE_API_URL", "https://apis.live.net"),
        resolvedServiceHost("STOWHAVEN_ONEDRIVE_LOGIN_URL", "https://login.live.com"),
        OAuth2App::fromEnvironment("STOWHAVEN_ONEDRIVE_CLIENT_ID", "STOWHAVEN_ONEDRIVE_CLIENT_SECRET")};
}

std::optional<std::string> SkyDriveService::problem() const { return app.problem("OneDrive", {&api, &login}); }

}  // namespace stowhaven
