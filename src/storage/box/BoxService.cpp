#include "storage/box/BoxService.h"

namespace stowhaven {

BoxService BoxService::fromEnvironment() {
    return BoxService{resolvedServiceHost("STOWHAVEN_BOX_API_URL", "https://api.box.com"),
                      resolvedServiceHost("STOWHAVEN_BOX_UPLOAD_URL", "https://upload.box.com"),
                      resolvedServiceHost("STOWHAVEN_BOX_AUTH_URL", "https://account.box.com"),
                      OAuth2App::fromEnvironment("STOWHAVEN_BOX_CLIENT_ID", "STOWHAVEN_BOX_CLIENT_SECRET")};
}

std::optional<std::string> BoxService::problem() const { return app.problem("Box", {&api, &upload, &authorization}); }

}  // namespace stowhaven
