#pragma once

#include "net/ServiceBase.h"

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace stowhaven {

// The app's client id and secret with an OAuth 2 service, which only the environment gives
// (none is compiled in), and the variables that give them, for the message that asks for one.
struct OAuth2App {
    std::optional<std::string> clientId;
    std::optional<std::string> clientSecret;
    const char* clientIdVariable = "";
    const char* clientSecretVariable = "";

    static OAuth2App fromEnvironment(const char* clientIdVariable, const char* clientSecretVariable);
    // Why the engine can't talk to SERVICENAME at all, in words: a credential the app lacks,
    // or one of HOSTS whose variable can't be used (the engine then refuses to work rather
    // than send the account's tokens elsewhere); none when it can.
    std::optional<std::string> problem(const std::string& serviceName,
                                       std::initializer_list<const ServiceBase*> hosts) const;
};

// A host of a service as ServiceBase resolves it from VARIABLE, with the reason logged when
// the variable's value can't be used.
ServiceBase resolvedServiceHost(const char* variable, std::string_view published);

}  // namespace stowhaven
