#include "storage/gdrive/GDriveService.h"

#include "platform/Log.h"

namespace stowhaven {

namespace {

constexpr const char* kClientIdVariable = "STOWHAVEN_GDRIVE_CLIENT_ID";
constexpr const char* kClientSecretVariable = "STOWHAVEN_GDRIVE_CLIENT_SECRET";

ServiceBase resolved(const char* variable, std::string_view published) {
    ServiceBase base = ServiceBase::resolve(variable, published);
    if (base.error) SH_LOG("{}: {}", variable, *base.error);
    return base;
}

}  // namespace

GDriveService GDriveService::fromEnvironment() {
    return GDriveService{resolved("STOWHAVEN_GDRIVE_API_URL", "https://www.googleapis.com"),
                         resolved("STOWHAVEN_GDRIVE_UPLOAD_URL", "https://www.googleapis.com"),
                         resolved("STOWHAVEN_GDRIVE_AUTH_URL", "https://accounts.google.com"),
                         appCredential(kClientIdVariable), appCredential(kClientSecretVariable)};
}

std::optional<std::string> GDriveService::problem() const {
    if (!clientId) return std::string("Google Drive needs the app's client id in ") + kClientIdVariable;
    if (!clientSecret) return std::string("Google Drive needs the app's client secret in ") + kClientSecretVariable;
    for (const ServiceBase* base : {&api, &upload, &authorization}) {
        if (base->error) return base->error;
    }
    return std::nullopt;
}

}  // namespace stowhaven
