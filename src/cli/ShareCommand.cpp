#include "cli/ShareCommand.h"

#include "cli/CatalogueLoad.h"
#include "cli/TerminalPasteboard.h"
#include "core/AddressBookNote.h"
#include "core/CydiaFileManager.h"
#include "core/Supervisor.h"
#include "flows/ShareManager.h"
#include "platform/FileManager.h"
#include "platform/Strings.h"
#include "platform/Terminal.h"
#include "platform/TerminalControl.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <string_view>

namespace stowhaven {

namespace {

int writeVCard(const std::string& file, std::ostream& out, std::ostream& errors) {
    CydiaFileManager& catalogue = CydiaFileManager::shared();
    const auto note = catalogue.getABVCardCurrentBackupSessionDataFormat();
    if (!note || note->empty()) {
        fmt::print(errors, "stowhaven: {}\n", Strings::localized("NOTHING_TO_SHARE"));
        return 1;
    }
    std::string error;
    if (!FileManager::writeFile(file, AddressBookNote::vCardOf(*note), &error)) {
        fmt::print(errors, "stowhaven: {}: {}\n", Strings::localized("ERROR_CREATING_VCARD"), error);
        return 1;
    }
    const auto date = catalogue.currentBackupSession()->sessionDate();
    fmt::print(out, "The session of {} is in {}.\n", date ? gDateFormatter.stringFromDate(*date) : "(null)", file);
    return 0;
}

// One address, name@domain, with nothing a header or a list of addresses would read apart.
bool isMailAddress(const std::string& text) {
    const auto at = text.find('@');
    if (at == 0 || at == std::string::npos || at + 1 == text.size() || text.find('@', at + 1) != std::string::npos) {
        return false;
    }
    return std::all_of(text.begin(), text.end(), [](unsigned char c) {
        return c > 0x20 && c < 0x7f &&
               std::string_view(",;<>()\\\"[]:").find(static_cast<char>(c)) == std::string_view::npos;
    });
}

}  // namespace

int ShareCommand::runText(const std::optional<std::string>& file, std::ostream& out, std::ostream& errors) {
    loadCatalogue();
    const std::string text = ShareManager::userData().text;
    if (text.empty()) return 1;
    if (!file) {
        out << text;
        return 0;
    }
    std::string error;
    if (!FileManager::writeFile(*file, text, &error)) {
        fmt::print(errors, "stowhaven: {}: {}\n", *file, error);
        return 1;
    }
    fmt::print(out, "The package list is in {}.\n", *file);
    return 0;
}

int ShareCommand::runMail(const std::vector<std::string>& recipients, std::ostream& /*out*/, std::ostream& errors) {
    for (const std::string& recipient : recipients) {
        if (!isMailAddress(recipient)) {
            fmt::print(errors, "stowhaven: {} is no mail address\n", recipient);
            return 2;
        }
    }
    loadCatalogue();
    const ShareData data = ShareManager::userData();
    if (data.text.empty()) return 1;
    ShareManager::mail(data, AlertPresenter::shared(), recipients);
    return 0;
}

int ShareCommand::runVCard(const std::optional<std::string>& file, std::ostream& out, std::ostream& errors) {
    loadCatalogue();
    if (file) return writeVCard(*file, out, errors);
    if (!CydiaFileManager::shared().currentBackupSession()) {
        fmt::print(errors, "stowhaven: {}\n", Strings::localized("NOTHING_TO_SHARE"));
        return 1;
    }
    ShareManager::mailVCard(AlertPresenter::shared());
    return 0;
}

int ShareCommand::runClipboard(const std::optional<std::string>& outputFile, std::ostream& out, std::ostream& errors) {
    if (!outputFile && !TerminalControl::isStandardOutputATerminal()) {
        fmt::print(errors,
                   "stowhaven: the clipboard is the terminal's: run this on a terminal, or name a file "
                   "with --output\n");
        return 1;
    }
    loadCatalogue();
    const ShareData data = ShareManager::userData();
    if (data.text.empty()) return 1;
    TerminalPasteboard pasteboard(out, Terminal::standardErrorWidth(), outputFile);
    ShareManager::copyToClipboard(data, pasteboard);
    if (pasteboard.failure()) {
        fmt::print(errors, "stowhaven: {}\n", *pasteboard.failure());
        return 1;
    }
    return 0;
}

int ShareCommand::runPdf(const std::optional<std::string>& file, std::ostream& out, std::ostream& /*errors*/) {
    loadCatalogue();
    const std::string path = file.value_or(ShareManager::defaultPrintPath());
    if (!ShareManager::print(path)) return 1;
    fmt::print(out, "The printout is in {}.\n", path);
    return 0;
}

}  // namespace stowhaven
