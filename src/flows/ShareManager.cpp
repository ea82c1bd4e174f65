#include "flows/ShareManager.h"

#include "core/AppIcon.h"
#include "core/CydiaFileManager.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/Log.h"
#include "platform/PdfDocument.h"
#include "platform/Strings.h"
#include "platform/TemporaryDirectory.h"

namespace stowhaven {

ShareData ShareManager::userData() {
    // The program has no web page of its own to point to: no address goes with the text.
    return {.text = CydiaFileManager::shared().getPackagesAsText(), .url = std::nullopt, .png = appIconPNGData()};
}

void ShareManager::mail(const ShareData& data, std::shared_ptr<AlertPresenter> caller,
                        std::vector<std::string> recipients) {
    const std::string body = !data.text.empty() ? data.text : data.url.value_or("");
    if (body.empty()) return;
    Supervisor& supervisor = Supervisor::shared();
    supervisor.setCaller(std::move(caller));
    // The list keeps its lines; the names in it are the packages' own, never markup.
    supervisor.sendEmail({.emailBody = "<pre>" + textutil::htmlEscaped(body) + "</pre>",
                          .subject = Strings::localized("SHARING_DATA_WITH_YOU"),
                          .toRecipients = std::move(recipients),
                          .fileAttachments = {},
                          .isHTML = true});
}

void ShareManager::mailVCard(std::shared_ptr<AlertPresenter> caller) {
    CydiaFileManager& catalogue = CydiaFileManager::shared();
    if (!catalogue.currentBackupSession()) return;
    Supervisor::shared().setCaller(std::move(caller));
    catalogue.emailABRecordData();
}

void ShareManager::copyToClipboard(const ShareData& data, Pasteboard& pasteboard) {
    std::vector<PasteboardItem> items;
    if (!data.text.empty()) items.push_back({"public.text", data.text});
    if (data.url) items.push_back({"public.url", *data.url});
    if (data.png) items.push_back({"public.png", *data.png});
    pasteboard.setItems(items);
}

std::string ShareManager::defaultPrintPath() { return TemporaryDirectory::path() + "/stowhaven.pdf"; }

bool ShareManager::print(const std::string& path) {
    const StyledText text = CydiaFileManager::shared().getPackagesForPrint();
    if (createPDF(text, path)) return true;
    // An empty list has had its alert already.
    if (!text.empty()) {
        Supervisor::showAlert(Strings::localized("PRINT_ERROR_TITLE"), Strings::localized("PRINT_ERROR_MESSAGE"));
    }
    return false;
}

bool ShareManager::createPDF(const StyledText& text, const std::string& path) {
    std::vector<PdfDocument::Run> runs;
    for (const StyledText::Run& run : text.runs()) runs.push_back({run.text, run.style == StyledText::Style::Heading});
    std::string error;
    switch (PdfDocument::write(runs, path, error)) {
        case PdfDocument::Outcome::Written:
            return true;
        case PdfDocument::Outcome::NothingToLayOut:
            SH_LOG("Could not create the attributed string for the framesetter");
            return false;
        case PdfDocument::Outcome::LayoutFailed:
            SH_LOG("Could not create the framesetter needed to lay out the atrributed string. Error <{}>", error);
            return false;
    }
    return false;
}

}  // namespace stowhaven
