#include "cli/OpenCommand.h"

#include "cli/BackupCommand.h"
#include "cli/InteractiveSession.h"
#include "cli/JobRequest.h"
#include "cli/TerminalFlow.h"
#include "core/CydiaFileManager.h"
#include "platform/FileManager.h"
#include "platform/Terminal.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <filesystem>

namespace stowhaven {

namespace {

constexpr const char* kSourceApplication = "the command line";

int runAutomaticBackup(const PresetAnswers& presets, std::ostream& out, std::ostream& errors) {
    TerminalFlow flow(errors, {presets, Terminal::isStandardInputATerminal(), false});
    if (!flow.appear()) return statusWithoutJob(flow, "backup", errors);
    flow.settle();
    return BackupCommand::outcome(flow, 0, out, errors);
}

int offerImport(const PresetAnswers& presets, std::ostream& out, std::ostream& errors) {
    const bool interactive = Terminal::isStandardInputATerminal();
    TerminalFlow flow(interactive ? out : errors, {presets, interactive, true});
    flow.appear();
    if (flow.alerts().unanswered()) return statusWithoutJob(flow, "import", errors);
    if (flow.userLeft()) return 130;
    const auto session = CydiaFileManager::shared().currentBackupSession();
    if (flow.screen().backupMode() || !session) {
        fmt::print(out, "Nothing was imported.\n");
        return 0;
    }
    fmt::print(out, "Imported: {} ({} packages). It is the session to restore now.\n", session->title().value_or("-"),
               session->nbPackages());
    return interactive ? InteractiveSession::run(flow) : 0;
}

}  // namespace

int OpenCommand::run(StowhavenAppDelegate& delegate, const std::string& target, const PresetAnswers& presets,
                     std::ostream& out, std::ostream& errors) {
    if (target == StowhavenAppDelegate::kAutobackupURL) {
        delegate.openURL(target, kSourceApplication);
        return runAutomaticBackup(presets, out, errors);
    }
    if (target.find("://") != std::string::npos) {
        fmt::print(errors, "stowhaven: <{}> is no URL of the program's: it takes {} and files\n", target,
                   StowhavenAppDelegate::kAutobackupURL);
        return 2;
    }
    if (!FileManager::isRegularFile(target)) {
        fmt::print(errors, "stowhaven: <{}> is no file\n", target);
        return 2;
    }
    const std::string path = std::filesystem::absolute(target).lexically_normal().string();
    delegate.openURL("file://" + path, kSourceApplication);
    return offerImport(presets, out, errors);
}

}  // namespace stowhaven
