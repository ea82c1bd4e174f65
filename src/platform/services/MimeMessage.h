#pragma once

#include "platform/services/MailComposer.h"

#include <optional>
#include <string>

namespace stowhaven {

// The text of a mail as a MIME message: the body as UTF-8 text or HTML, each attachment in
// Base64. A recipient with a control character in it is left out, so that no header can be
// slipped in. Answers nothing when an attachment can't be read.
class MimeMessage {
public:
    static std::optional<std::string> text(const MailMessage& message, const std::string& boundary);
};

}  // namespace stowhaven
