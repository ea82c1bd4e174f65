#include "storage/gdrive/GDriveTokens.h"

#include "core/Text.h"

namespace stowhaven {

OAuth2Account GDriveTokens::account(const GDriveService& service) {
    return OAuth2Account{"Google Drive",
                         service.tokenUrl(),
                         service.app.clientId.value_or(""),
                         service.app.clientSecret.value_or(""),
                         service.problem(),
                         kRefreshTokenKey,
                         ""};
}

std::optional<std::string> GDriveTokens::storedRefreshToken() { return OAuth2Tokens::storedIn(kRefreshTokenKey, ""); }

std::string GDriveTokens::codeExchangeForm(const std::string& verifier) {
    return "&code_verifier=" + textutil::percentEncoded(verifier) +
           "&redirect_uri=" + textutil::percentEncoded(kRedirectAddress);
}

}  // namespace stowhaven
