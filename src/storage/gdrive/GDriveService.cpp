#include "storage/gdrive/GDriveService.h"

namespace stowhaven {

GDriveService GDriveService::fromEnvironment() {
    return GDriveService{resolvedServiceHost("STOWHAVEN_GDRIVE_API_URL", "https://www.googleapis.com"),
                         resolvedServiceHost("STOWHAVEN_GDRIVE_UPLOAD_URL", "https://www.googleapis.com"),
                         resolvedServiceHost("STOWHAVEN_GDRIVE_AUTH_URL", "https://accounts.google.com"),
                         OAuth2App::fromEnvironment("STOWHAVEN_GDRIVE_CLIENT_ID", "STOWHAVEN_GDRIVE_CLIENT_SECRET")};
}

std::optional<std::string> GDriveService::problem() const {
    if (auto missing = app.missingCredential("Google Drive")) return missing;
    for (const ServiceBase* base : {&api, &upload, &authorization}) {
        if (base->error) return base->error;
    }
    return std::nullopt;
}

}  // namespace stowhaven
