#include "platform/services/HostMailComposer.h"

#include "platform/DeviceRoot.h"
#include "platform/Environment.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/ShellQuote.h"
#include "platform/TemporaryDirectory.h"
#include "platform/services/MimeMessage.h"
#include "platform/services/OutboxFile.h"

namespace stowhaven {

namespace {

std::string mailFolder() { return DeviceRoot::var() + "/mobile/Library/Stowhaven/Mail"; }

// The message goes to the transport from a file of the program's own, which the transport
// reads on its standard input.
bool sendThrough(const std::string& transport, const std::string& message) {
    const std::string file = TemporaryDirectory::path() + "/outgoing-mail.eml";
    std::string error;
    if (!FileManager::writeFile(file, message, &error)) {
        SH_LOG("Couldn't write the mail for the transport: {}", error);
        return false;
    }
    Platform::current().shell().systemExecute(ShellQuote::path(transport) + " -t -i < " + ShellQuote::path(file));
    FileManager::removeItem(file);
    return true;
}

}  // namespace

MailResult HostMailComposer::compose(const MailMessage& message) {
    const auto now = std::chrono::system_clock::now();
    const std::string boundary = "stowhaven-" + OutboxFile::utcStamp(now);
    const auto text = MimeMessage::text(message, boundary);
    if (!text) return MailResult::Failed;
    if (const auto transport = environmentVariable("STOWHAVEN_SENDMAIL");
        transport && !transport->empty() && !message.toRecipients.empty()) {
        return sendThrough(*transport, *text) ? MailResult::Sent : MailResult::Failed;
    }
    return OutboxFile::write(mailFolder(), now, "eml", *text) ? MailResult::Saved : MailResult::Failed;
}

void HostMailComposer::openMailURL(const std::string& url) {
    OutboxFile::write(mailFolder(), std::chrono::system_clock::now(), "txt", url + "\n");
}

}  // namespace stowhaven
