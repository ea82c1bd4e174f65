#include "storage/OAuthLogin.h"

namespace stowhaven {

std::unique_ptr<OAuthLogin> makeOAuthLogin(StorageType) { return nullptr; }

}  // namespace stowhaven
