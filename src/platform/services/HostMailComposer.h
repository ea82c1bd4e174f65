#pragma once

#include "platform/services/MailComposer.h"

namespace stowhaven {

// A mail with its recipients goes to the host's mail transport when one is configured: the
// program named by the variable STOWHAVEN_SENDMAIL, which takes the MIME message as
// sendmail does ("-t -i", recipients read from the headers). Any other mail is saved as a
// MIME message (.eml) in <var>/mobile/Library/Stowhaven/Mail, from where any mail program
// can open and send it; a "mailto:" address is saved there as a text file.
class HostMailComposer final : public MailComposer {
public:
    bool canSendMail() const override { return true; }
    MailResult compose(const MailMessage& message) override;
    void openMailURL(const std::string& url) override;
};

}  // namespace stowhaven
