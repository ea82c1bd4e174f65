#include "storage/box/BoxTokens.h"

namespace stowhaven {

OAuth2Account BoxTokens::account(const BoxService& service) {
    return OAuth2Account{"Box",
                         service.tokenUrl(),
                         service.app.clientId.value_or(""),
                         service.app.clientSecret.value_or(""),
                         service.problem(),
                         kRefreshTokenKey,
                         kInvalidRefreshToken};
}

std::optional<std::string> BoxTokens::storedRefreshToken() {
    return OAuth2Tokens::storedIn(kRefreshTokenKey, kInvalidRefreshToken);
}

}  // namespace stowhaven
