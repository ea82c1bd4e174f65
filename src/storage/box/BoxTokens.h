#pragma once

#include "storage/OAuth2Tokens.h"
#include "storage/box/BoxService.h"

#include <optional>
#include <string>

namespace stowhaven {

// Box's OAuth 2 tokens. A refresh token serves once: each grant brings a new one, stored at
// once in "box_api_refresh_token".
struct BoxTokens {
    static constexpr const char* kRefreshTokenKey = "box_api_refresh_token";
    // What the setting holds while no user is logged in.
    static constexpr const char* kInvalidRefreshToken = "INVALID_REFRESH_TOKEN";

    static OAuth2Account account(const BoxService& service);
    // The stored refresh token, none without one.
    static std::optional<std::string> storedRefreshToken();
};

}  // namespace stowhaven
