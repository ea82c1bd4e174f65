#pragma once

#include "platform/services/ContactsAccess.h"

#include <string>

namespace stowhaven {

// The owner's decision as the device records it: a row of the `access` table of its
// privacy database, <var>/mobile/Library/TCC/TCC.db, for the address book and the
// program's bundle identifier. Nobody can be asked on the host: a request that finds no
// decision records the grant, as the device does when the owner says yes.
class HostContactsAccess final : public ContactsAccess {
public:
    static constexpr const char* kService = "kTCCServiceAddressBook";
    static constexpr const char* kClient = "com.larkmoor.stowhaven";

    ContactsAuthorization authorizationStatus() const override;
    // Answers on the calling thread, before it returns. A decision already made stands,
    // as the device asks only once.
    void requestAccess(std::function<void(bool granted)> completion) override;

private:
    static std::string databasePath();
    static bool recordGrant(std::string* error);
};

}  // namespace stowhaven
