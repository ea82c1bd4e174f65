#include "storage/sugarsync/SugarSyncLogin.h"

#include "core/Supervisor.h"
#include "platform/Log.h"
#include "storage/OAuthLogin.h"
#include "storage/sugarsync/SugarSyncHelper.h"

namespace stowhaven {

// The engine is made while another stays current, so that it doesn't log in with what is
// stored; it becomes current once the new credentials are proved.
std::optional<std::string> SugarSyncLogin::logIn(const std::string& user, const std::string& password) {
    Supervisor& supervisor = Supervisor::shared();
    const StorageType before = supervisor.currentStorageType();
    if (before == StorageType::SugarSync) supervisor.setStorageToLocal();
    helper_ = SugarSyncHelper::createSugarSyncHelper();
    if (const auto error = helper_->logIn(user, password, true)) {
        supervisor.setStorageTo(before);
        return error;
    }
    supervisor.setStorageToSugarSync();
    supervisor.persistStorageType();
    SH_LOG("Logged in to SugarSync as <{}>", helper_->accountName());
    return std::nullopt;
}

std::string SugarSyncLogin::accountName() { return helper_ ? helper_->accountName() : std::string(); }

void SugarSyncLogin::logOut() {
    SugarSyncHelper::unlink();
    leaveLoggedOutEngine(StorageType::SugarSync);
}

}  // namespace stowhaven
