#include "core/Supervisor.h"

#include "core/Text.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/Strings.h"
#include "platform/TemporaryDirectory.h"
#include "platform/dispatch/MainQueue.h"

#include <fmt/format.h>

namespace stowhaven {

namespace {

std::string mailtoURL(const Email& email) {
    std::string recipients;
    for (const std::string& recipient : email.toRecipients) {
        if (!recipients.empty()) recipients += ',';
        recipients += textutil::percentEncoded(recipient);
    }
    std::string url = fmt::format("mailto:{}?subject={}", recipients, textutil::percentEncoded(email.subject));
    url += fmt::format("&body={}", textutil::percentEncoded(email.emailBody));
    if (!email.fileAttachments.empty()) {
        url += fmt::format("&attachment={}", textutil::percentEncoded(email.fileAttachments.front().filePath));
    }
    return url;
}

const char* resultKey(MailResult result) {
    switch (result) {
        case MailResult::Cancelled:
            return "EMAIL_CANCELLED";
        case MailResult::Saved:
            return "EMAIL_SAVED";
        case MailResult::Sent:
            return "EMAIL_SENT";
        case MailResult::Failed:
            return "FAILED_TO_SEND_EMAIL";
    }
    return "EMAIL_NOT_SENT";
}

}  // namespace

void Supervisor::setCaller(std::shared_ptr<AlertPresenter> caller) {
    std::lock_guard lock(mutex_);
    caller_ = std::move(caller);
}

void Supervisor::sendEmail(Email email) {
    MainQueue::shared().async([this, email = std::move(email)] { composeEmail(email); });
}

void Supervisor::composeEmail(const Email& email) {
    MailComposer& mail = Platform::current().mail();
    if (!mail.canSendMail()) {
        mail.openMailURL(mailtoURL(email));
        return;
    }
    std::shared_ptr<AlertPresenter> caller;
    {
        std::lock_guard lock(mutex_);
        caller = caller_;
    }
    if (!caller) {
        SH_LOG("caller can NOT be NIL!");
        return;
    }
    const std::string details = email.isHTML ? "<pre>" + textutil::htmlEscaped(deviceInfos_) + "</pre>" : deviceInfos_;
    const MailResult result =
        mail.compose({fmt::format("Stowhaven™({}) - {}", version_, email.subject), email.toRecipients,
                      email.emailBody + details, email.fileAttachments, email.isHTML});
    caller->showAlert(Strings::localized(resultKey(result)), "", {Strings::localized("OK_BUTTON")}, {});
    // The contact card that the sharing of a backup writes to go with its mail.
    deleteFileAtPath(TemporaryDirectory::path() + "/Stow Haven.vcf");
}

}  // namespace stowhaven
