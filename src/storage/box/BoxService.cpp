#include "storage/box/BoxService.h"

#include "platform/Log.h"

namespace stowhaven {

namespace {

constexpr const char* kClientIdVariable = "STOWHAVEN_BOX_CLIENT_ID";
constexpr const char* kClientSecretVariable = "STOWHAVEN_BOX_CLIENT_SECRET";

ServiceBase resolved(const char* variable, std::string_view published) {
    ServiceBase base = ServiceBase::resolve(variable, published);
    if (base.error) SH_LOG("{}: {}", variable, *base.error);
    return base;
}

}  // namespace

BoxService BoxService::fromEnvironment() {
    return BoxService{resolved("STOWHAVEN_BOX_API_URL", "https://api.box.com"),
                      resolved("STOWHAVEN_BOX_UPLOAD_URL", "https://upload.box.com"),
                      resolved("STOWHAVEN_BOX_AUTH_URL", "https://account.box.com"), appCredential(kClientIdVariable),
                      appCredential(kClientSecretVariable)};
}

std::optional<std::string> BoxService::problem() const {
    if (!clientId) return std::string("Box needs the app's client id in ") + kClientIdVariable;
    if (!clientSecret) return std::string("Box needs the app's client secret in ") + kClientSecretVariable;
    return std::nullopt;
}

}  // namespace stowhaven
