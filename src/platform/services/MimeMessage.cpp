#include "platform/services/MimeMessage.h"

#include "platform/Log.h"

#include <openssl/evp.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

namespace stowhaven {

namespace {

std::string base64(const std::string& bytes) {
    std::string encoded(4 * ((bytes.size() + 2) / 3) + 1, '\0');
    const int length =
        EVP_EncodeBlock(reinterpret_cast<unsigned char*>(encoded.data()),
                        reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
    encoded.resize(static_cast<std::size_t>(length));
    return encoded;
}

std::string base64Lines(const std::string& bytes) {
    const std::string encoded = base64(bytes);
    std::string lines;
    for (std::size_t at = 0; at < encoded.size(); at += 76) lines += encoded.substr(at, 76) + "\r\n";
    return lines;
}

// A header value outside ASCII goes as an encoded word.
std::string headerValue(const std::string& value) {
    for (unsigned char c : value) {
        if (c >= 0x80 || c == '\r' || c == '\n') return "=?UTF-8?B?" + base64(value) + "?=";
    }
    return value;
}

// A file name stands between quotes in its header.
std::string quotableName(std::string name) {
    for (char& c : name) {
        if (c == '"' || c == '\\' || c == '\r' || c == '\n') c = '_';
    }
    return name;
}

std::string recipientList(const std::vector<std::string>& recipients) {
    std::string text;
    for (const std::string& recipient : recipients) {
        if (std::any_of(recipient.begin(), recipient.end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; })) {
            SH_LOG("A recipient with a control character is left out");
            continue;
        }
        text += (text.empty() ? "" : ", ") + recipient;
    }
    return text;
}

}  // namespace

std::optional<std::string> MimeMessage::text(const MailMessage& message, const std::string& boundary) {
    std::ostringstream mail;
    mail << "To: " << recipientList(message.toRecipients) << "\r\n"
         << "Subject: " << headerValue(message.subject) << "\r\n"
         << "MIME-Version: 1.0\r\n"
         << "Content-Type: multipart/mixed; boundary=\"" << boundary << "\"\r\n\r\n"
         << "--" << boundary << "\r\n"
         << "Content-Type: text/" << (message.htmlBody ? "html" : "plain") << "; charset=UTF-8\r\n"
         << "Content-Transfer-Encoding: base64\r\n\r\n"
         << base64Lines(message.body);
    for (const MailAttachment& attachment : message.attachments) {
        std::ifstream file(attachment.filePath, std::ios::binary);
        if (!file) {
            SH_LOG("Couldn't read attachment <{}>", attachment.filePath);
            return std::nullopt;
        }
        const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        const std::string name = quotableName(attachment.fileName);
        mail << "--" << boundary << "\r\n"
             << "Content-Type: " << attachment.mimeType << "; name=\"" << name << "\"\r\n"
             << "Content-Disposition: attachment; filename=\"" << name << "\"\r\n"
             << "Content-Transfer-Encoding: base64\r\n\r\n"
             << base64Lines(bytes);
    }
    mail << "--" << boundary << "--\r\n";
    return mail.str();
}

}  // namespace stowhaven
