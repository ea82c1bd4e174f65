#include "storage/dropbox/DropboxApp.h"

#include "net/ServiceBase.h"
#include "platform/Strings.h"

#include <algorithm>
#include <cctype>

namespace stowhaven {

namespace {

bool isAlphanumeric(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isalnum(c) != 0; });
}

// A credential of the app; none, with the alert's message and the variable to set, when it
// is missing or not alphanumeric.
std::optional<std::string> credential(const char* variable, const char* messageKey, std::string& error) {
    const auto value = appCredential(variable);
    if (value && isAlphanumeric(*value)) return value;
    error = Strings::localized(messageKey) + " (" + variable + (value ? ")" : " is not set)");
    return std::nullopt;
}

}  // namespace

std::optional<DropboxApp> DropboxApp::fromEnvironment(std::string& error) {
    DropboxApp app;
    const auto key = credential("STOWHAVEN_DROPBOX_APP_KEY", "DROPBOX_BAD_KEY_ERROR_MESSAGE", error);
    if (!key) return std::nullopt;
    const auto secret = credential("STOWHAVEN_DROPBOX_APP_SECRET", "DROPBOX_BAD_SECRET_ERROR_MESSAGE", error);
    if (!secret) return std::nullopt;
    app.key = *key;
    app.secret = *secret;
    const struct {
        const char* variable;
        const char* published;
        std::string* host;
    } hosts[] = {{"STOWHAVEN_DROPBOX_API_URL", "https://api.dropbox.com", &app.apiHost},
                 {"STOWHAVEN_DROPBOX_CONTENT_URL", "https://api-content.dropbox.com", &app.contentHost},
                 {"STOWHAVEN_DROPBOX_WEB_URL", "https://www.dropbox.com", &app.webHost}};
    for (const auto& host : hosts) {
        const ServiceBase base = ServiceBase::resolve(host.variable, host.published);
        if (base.error) {
            error = *base.error;
            return std::nullopt;
        }
        *host.host = base.url;
    }
    return app;
}

}  // namespace stowhaven
