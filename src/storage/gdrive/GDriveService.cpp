#include "storage/gdrive/GDriveService.h"

namespace stowhaven {

GDriveService GDriveService::fromEnvironment() {
    return GDriveService{resolvedServiceHost("STOWHAVEN_GDRIVE_API_URL", "https://www.googleapis.com"),
                         resolvedServiceHost("STOWHAVEN_GDRIVE_UPLOAD_URL", "https://www.googleapis.com"),
                         resolvedServiceHost("STOWHAVEN_GDRIVE_AUTH_URL", "https://accounts.google.com"),
                         OAuth2App::fromEnvironment("STOWHAVEN_GDRIVE_CLIENT_ID", "STOWHAVEN_GDRIVE_CLIENT_SECRET")};
}

std::optional<std::string> GDriveService::problem() const {
    return app.problem("Google Drive", {&api, &upload, &authorization});
}

}  // namespace stowhaven
