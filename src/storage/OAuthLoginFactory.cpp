#include "storage/OAuthLogin.h"

#include "core/Supervisor.h"

#include "storage/box/BoxLogin.h"
#include "storage/dropbox/DropboxLogin.h"
#include "storage/gdrive/GDriveLogin.h"
#include "storage/onedrive/SkyDriveLogin.h"

#include <openssl/rand.h>

namespace stowhaven {

std::unique_ptr<OAuthLogin> makeOAuthLogin(StorageType type) {
    switch (type) {
        case StorageType::Dropbox:
            return std::make_unique<DropboxLogin>();
        case StorageType::Box:
            return std::make_unique<BoxLogin>();
        case StorageType::GDrive:
            return std::make_unique<GDriveLogin>();
        case StorageType::SkyDrive:
            return std::make_unique<SkyDriveLogin>();
        default:
            return nullptr;
    }
}

std::optional<std::array<unsigned char, 16>> loginStateBytes() {
    std::array<unsigned char, 16> bytes{};
    if (RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) != 1) return std::nullopt;
    return bytes;
}

void leaveLoggedOutEngine(StorageType type) {
    Supervisor& supervisor = Supervisor::shared();
    const auto stored = supervisor.lowLevelGetNumberPreferencesDataForKey("CurrentStorageType");
    const bool wasStored = stored && stored->numberAsInteger() == static_cast<std::int64_t>(type);
    if (supervisor.currentStorageType() == type || wasStored) {
        supervisor.setStorageToLocal();
        supervisor.persistStorageType();
    }
}

}  // namespace stowhaven
