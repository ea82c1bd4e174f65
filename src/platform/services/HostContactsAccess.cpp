#include "platform/services/HostContactsAccess.h"

#include "platform/Log.h"
#include "platform/services/PrivacyRecord.h"

namespace stowhaven {

ContactsAuthorization HostContactsAccess::authorizationStatus() const {
    switch (PrivacyRecord::decisionFor(kService)) {
        case PrivacyRecord::Decision::Allowed:
            return ContactsAuthorization::Authorized;
        case PrivacyRecord::Decision::Refused:
            return ContactsAuthorization::Denied;
        case PrivacyRecord::Decision::None:
            break;
    }
    return ContactsAuthorization::NotDetermined;
}

void HostContactsAccess::requestAccess(std::function<void(bool granted)> completion) {
    const ContactsAuthorization status = authorizationStatus();
    if (status != ContactsAuthorization::NotDetermined) {
        completion(status == ContactsAuthorization::Authorized);
        return;
    }
    std::string error;
    const bool granted = PrivacyRecord::recordGrant(kService, &error);
    if (!granted) SH_LOG("can't record the access to the contacts in the privacy database: {}", error);
    completion(granted);
}

}  // namespace stowhaven
