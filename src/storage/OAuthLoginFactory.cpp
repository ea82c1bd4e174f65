#include "storage/OAuthLogin.h"

#include "storage/box/BoxLogin.h"
#include "storage/dropbox/DropboxLogin.h"

namespace stowhaven {

std::unique_ptr<OAuthLogin> makeOAuthLogin(StorageType type) {
    switch (type) {
        case StorageType::Dropbox:
            return std::make_unique<DropboxLogin>();
        case StorageType::Box:
            return std::make_unique<BoxLogin>();
        default:
            return nullptr;
    }
}

}  // namespace stowhaven
