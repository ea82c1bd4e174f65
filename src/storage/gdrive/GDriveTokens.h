#pragma once

#include "storage/OAuth2Tokens.h"
#include "storage/gdrive/GDriveService.h"

#include <optional>
#include <string>

namespace stowhaven {

// Google Drive's OAuth 2 tokens. The refresh token, kept in "Stowhaven_v7_GDRIVE", lasts: a
// refresh brings only a new access token.
struct GDriveTokens {
    static constexpr const char* kRefreshTokenKey = "Stowhaven_v7_GDRIVE";
    // Where the authorisation page sends the user; the code exchange names it again.
    static constexpr const char* kRedirectAddress = "http://127.0.0.1";

    static OAuth2Account account(const GDriveService& service);
    // The stored refresh token, none without one.
    static std::optional<std::string> storedRefreshToken();
    // What a code exchange adds to its form: the PKCE verifier of the address and the
    // redirect address.
    static std::string codeExchangeForm(const std::string& verifier);
};

}  // namespace stowhaven
