#pragma once

#include <string>
#include <vector>

namespace stowhaven {

struct MailAttachment {
    std::string filePath;
    std::string mimeType;
    std::string fileName;
};

struct MailMessage {
    std::string subject;
    std::vector<std::string> toRecipients;
    std::string body;
    std::vector<MailAttachment> attachments;
    // The body is HTML rather than plain text.
    bool htmlBody = false;
};

enum class MailResult { Cancelled, Saved, Sent, Failed };

// The device's mail composer, and the mail application it falls back to.
class MailComposer {
public:
    virtual ~MailComposer() = default;
    virtual bool canSendMail() const = 0;
    virtual MailResult compose(const MailMessage& message) = 0;
    // Hands a "mailto:" address to the mail application.
    virtual void openMailURL(const std::string& url) = 0;
};

}  // namespace stowhaven
