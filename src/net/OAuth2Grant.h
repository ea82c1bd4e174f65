#pragma once

#include "net/RestClient.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace stowhaven {

// What an OAuth 2 token endpoint hands out. Services that keep a refresh token good across
// refreshes send none with a refresh; those whose refresh tokens serve once send a new one
// each time.
struct OAuth2Grant {
    std::string accessToken;
    std::optional<std::string> refreshToken;
    // Seconds the access token lives; none when the reply doesn't say.
    std::optional<std::int64_t> expiresIn;

    // The token endpoint's JSON reply; none, with ERROR, for a body that isn't one or holds
    // no access token.
    static std::optional<OAuth2Grant> read(std::string_view body, std::string& error);
    // What a refused request tells the user: the endpoint's "error_description", its "error",
    // else the client's own error or the status.
    static std::string errorText(const RestReply& reply);
};

}  // namespace stowhaven
