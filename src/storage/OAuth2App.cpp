#include "storage/OAuth2App.h"

#include "platform/Log.h"

namespace stowhaven {

OAuth2App OAuth2App::fromEnvironment(const char* clientIdVariable, const char* clientSecretVariable) {
    return OAuth2App{appCredential(clientIdVariable), appCredential(clientSecretVariable), clientIdVariable,
                     clientSecretVariable};
}

std::optional<std::string> OAuth2App::problem(const std::string& serviceName,
                                              std::initializer_list<const ServiceBase*> hosts) const {
    if (!clientId) return serviceName + " needs the app's client id in " + clientIdVariable;
    if (!clientSecret) return serviceName + " needs the app's client secret in " + clientSecretVariable;
    for (const ServiceBase* host : hosts) {
        if (host->error) return host->error;
    }
    return std::nullopt;
}

ServiceBase resolvedServiceHost(const char* variable, std::string_view published) {
    ServiceBase base = ServiceBase::resolve(variable, published);
    if (base.error) SH_LOG("{}: {}", variable, *base.error);
    return base;
}

}  // namespace stowhaven
