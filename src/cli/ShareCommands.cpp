#include "cli/ShareCommands.h"

#include "cli/ShareCommand.h"
#include "platform/dispatch/MainQueue.h"

namespace stowhaven {

void ShareCommands::add(CLI::App& app) {
    command_ = app.add_subcommand("share", "Share the package list, or send a session to another device");
    command_->require_subcommand(1);
    text_ = command_->add_subcommand("text", "Write the package list as text");
    text_->add_option("file", file_, "The file to write (standard output without one)");
    mail_ = command_->add_subcommand("mail", "Mail the package list");
    mail_->add_option("--to", recipients_, "A recipient's address (the mail program asks without one)");
    vCard_ = command_->add_subcommand("vcard", "Write the current session as a vCard, or mail it");
    vCard_->add_option("file", file_, "The vCard file to write (mailed without one)");
    clipboard_ = command_->add_subcommand("clipboard", "Copy the package list to the terminal's clipboard");
    clipboard_->add_option("--output", file_, "Write the package list to this file instead");
    pdf_ = command_->add_subcommand("pdf", "Print the package list as a PDF file");
    pdf_->add_option("file", file_, "The PDF file to write (stowhaven.pdf in the temporary folder without one)");
}

int ShareCommands::run(std::ostream& out, std::ostream& errors) const {
    const int status = runParsed(out, errors);
    // What the action left on the main queue: its alerts, the mail's composition.
    while (MainQueue::shared().runOnce() > 0) {
    }
    return status;
}

int ShareCommands::runParsed(std::ostream& out, std::ostream& errors) const {
    if (text_->parsed()) return ShareCommand::runText(file_, out, errors);
    if (mail_->parsed()) return ShareCommand::runMail(recipients_, out, errors);
    if (vCard_->parsed()) return ShareCommand::runVCard(file_, out, errors);
    if (clipboard_->parsed()) return ShareCommand::runClipboard(file_, out, errors);
    return ShareCommand::runPdf(file_, out, errors);
}

}  // namespace stowhaven
