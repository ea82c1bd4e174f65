#pragma once

#include "platform/services/ContactsAccess.h"

namespace stowhaven {

// The owner's decision on the address book, as the device's privacy record keeps it. Nobody
// can be asked on the host: a request that finds no decision records the grant, as the
// device does when the owner says yes.
class HostContactsAccess final : public ContactsAccess {
public:
    static constexpr const char* kService = "kTCCServiceAddressBook";

    ContactsAuthorization authorizationStatus() const override;
    // Answers on the calling thread, before it returns. A decision already made stands,
    // as the device asks only once.
    void requestAccess(std::function<void(bool granted)> completion) override;
};

}  // namespace stowhaven
