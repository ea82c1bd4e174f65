#include "cli/ShareTerminal.h"

#include "cli/TerminalFlow.h"
#include "cli/TerminalPasteboard.h"
#include "cli/TextWrap.h"
#include "core/AlertPresenter.h"
#include "core/CydiaFileManager.h"
#include "flows/ShareManager.h"
#include "platform/Strings.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

namespace stowhaven {

namespace {

enum Action : std::size_t { ShowText, Mail, VCard, Print, Clipboard };

}  // namespace

// One action, after which the main menu comes back with what it left to show (the mail's
// result, say).
void showShareMenu(TerminalFlow& flow) {
    const auto action = flow.prompt()->choose(
        "Share", {"Show the package list", "Mail the package list", "Mail this session as a vCard",
                  "Print the package list as a PDF file", "Copy the package list to the clipboard"});
    if (!action) return;
    std::ostream& out = flow.out();
    switch (*action) {
        case ShowText:
            out << wrapped(ShareManager::userData().text, flow.width());
            break;
        case Mail:
            ShareManager::mail(ShareManager::userData(), AlertPresenter::shared());
            break;
        case VCard:
            // Without a session the flow does nothing: the terminal says why.
            if (!CydiaFileManager::shared().currentBackupSession()) {
                out << wrapped(Strings::localized("NOTHING_TO_SHARE"), flow.width()) << "\n";
            }
            ShareManager::mailVCard(AlertPresenter::shared());
            break;
        case Print:
            if (const std::string path = ShareManager::defaultPrintPath(); ShareManager::print(path)) {
                out << wrapped(fmt::format("The printout is in {}.", path), flow.width()) << "\n";
            }
            break;
        case Clipboard: {
            const ShareData data = ShareManager::userData();
            if (data.text.empty()) break;
            TerminalPasteboard pasteboard(out, flow.width(), std::nullopt);
            ShareManager::copyToClipboard(data, pasteboard);
            if (pasteboard.failure()) {
                out << wrapped("The list was not copied: " + *pasteboard.failure(), flow.width()) << "\n";
            }
            break;
        }
    }
}

}  // namespace stowhaven
