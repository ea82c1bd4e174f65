#pragma once

#include "core/AlertPresenter.h"
#include "core/StyledText.h"
#include "platform/services/Pasteboard.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// What the main screen's options hand to the sharing actions.
struct ShareData {
    // The package list; empty when there is nothing to share.
    std::string text;
    std::optional<std::string> url;
    // The program's icon as PNG.
    std::optional<std::string> png;
};

// The sharing actions that the main screen's options offer: the package list by mail, on
// the pasteboard or printed, and the current session as a vCard for another device. CALLER
// is the screen that presents what follows (the mail's result).
class ShareManager {
public:
    // The package list of the direction the user works in, after the "nothing to share"
    // alert when it is empty, and the icon.
    static ShareData userData();

    // A mail of the text, or of the address when there is no text, to RECIPIENTS when the
    // user named any (the composer asks otherwise).
    static void mail(const ShareData& data, std::shared_ptr<AlertPresenter> caller,
                     std::vector<std::string> recipients = {});
    // The current session mailed as the vCard that another device imports; nothing happens
    // without a current session.
    static void mailVCard(std::shared_ptr<AlertPresenter> caller);
    // Up to three items, in this order, each only if present: the text, the address, the icon.
    static void copyToClipboard(const ShareData& data, Pasteboard& pasteboard);

    // "stowhaven.pdf" in the program's temporary directory.
    static std::string defaultPrintPath();
    // The printout of the package list in PATH; false, with an alert when the file could
    // not be written, and no file.
    static bool print(const std::string& path);
    // TEXT laid out on numbered pages in PATH; false after a log line, and no file.
    static bool createPDF(const StyledText& text, const std::string& path);
};

}  // namespace stowhaven
