#include "platform/services/HostMailComposer.h"

#include "platform/services/MimeMessage.h"
#include "platform/services/OutboxFile.h"

#include "platform/DeviceRoot.h"

namespace stowhaven {

namespace {

std::string mailFolder() { return DeviceRoot::var() + "/mobile/Library/Stowhaven/Mail"; }

}  // namespace

MailResult HostMailComposer::compose(const MailMessage& message) {
    const auto now = std::chrono::system_clock::now();
    const std::string boundary = "stowhaven-" + OutboxFile::utcStamp(now);
    const auto text = MimeMessage::text(message, boundary);
    if (!text || !OutboxFile::write(mailFolder(), now, "eml", *text)) return MailResult::Failed;
    return MailResult::Saved;
}

void HostMailComposer::openMailURL(const std::string& url) { OutboxFile::write(mailFolder(), std::chrono::system_clock::now(), "txt", url + "\n"); }

}  // namespace stowhaven
