#pragma once

#include <functional>

namespace stowhaven {

enum class ContactsAuthorization { NotDetermined, Restricted, Denied, Authorized };

// Whether the owner lets the program at the contacts.
class ContactsAccess {
public:
    virtual ~ContactsAccess() = default;
    virtual ContactsAuthorization authorizationStatus() const = 0;
    // Asks the owner once; the answer comes to the completion, on a thread of the
    // service's choosing.
    virtual void requestAccess(std::function<void(bool granted)> completion) = 0;
};

}  // namespace stowhaven
