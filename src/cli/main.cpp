#include "cli/BackupCommand.h"
#include "cli/DevicesCommand.h"
#include "cli/HistoryCommands.h"
#include "cli/HistoryViewCommand.h"
#include "cli/InteractiveSession.h"
#include "cli/ItemsCommand.h"
#include "cli/OAuthStorageCommands.h"
#include "cli/OpenCommand.h"
#include "cli/PackagesCommand.h"
#include "cli/RestoreCommand.h"
#include "cli/SelectCommand.h"
#include "cli/ServerStorageCommands.h"
#include "cli/SettingsCommand.h"
#include "cli/ShareCommands.h"
#include "cli/StatusCommand.h"
#include "cli/StorageCommand.h"
#include "cli/SugarSyncStorageCommands.h"
#include "cli/TerminalAlerts.h"
#include "cli/TerminalFlow.h"
#include "cli/VerifyCommand.h"
#include "core/DeviceToolCheck.h"
#include "core/LanguageOrder.h"
#include "core/StowhavenAppDelegate.h"
#include "core/Text.h"
#include "platform/DeviceFacts.h"
#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/FileModes.h"
#include "platform/LifeCycleSignals.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/PrintableOutput.h"
#include "platform/SystemLocale.h"
#include "platform/Terminal.h"
#include "platform/UserDefaults.h"
#include "platform/dispatch/GlobalQueue.h"
#include "platform/dispatch/MainQueue.h"

#include <unistd.h>
#include <CLI/CLI.hpp>

#include <iostream>

using namespace stowhaven;

namespace {

// The program does all of its device work as root, as it does on the device, where it is
// installed set-user-id root.
bool becomeRoot() { return setuid(0) == 0 && setgid(0) == 0; }

constexpr int kUsageError = 2;
constexpr int kInterrupted = 130;

// Before the program leaves, the work still running on its threads (the catalogue's load,
// say) comes to its end with no tool left to start, so that none of it writes into the
// temporary folder after the leaving's sweep.
void endWorkInProgress() {
    Platform::current().shell().stopCommandsForGood();
    GlobalQueue::shutdownAll();
}

// The life-cycle events that signals bring go to the main thread, like the others. Ctrl-C
// is the running flow's to take, during a job or a question; otherwise the user leaves.
void watchLifeCycleSignals(StowhavenAppDelegate* delegate) {
    const auto onMainQueue = [](Block event) { return [event] { MainQueue::shared().async(event); }; };
    const auto leaving = [](Block leave) {
        return [leave] {
            endWorkInProgress();
            leave();
        };
    };
    LifeCycleSignals::watch({
        .hangUp = onMainQueue(leaving([delegate] { delegate->applicationDidEnterBackground(0); })),
        .terminate = onMainQueue(leaving([delegate] { delegate->applicationWillTerminate(); })),
        .resume = onMainQueue([delegate] { delegate->applicationWillEnterForeground(); }),
        .interrupt =
            [leave = onMainQueue(leaving([delegate] { delegate->applicationDidEnterBackground(kInterrupted); }))] {
                if (!TerminalFlow::interruptCurrent()) leave();
            },
    });
}

// The options that answer a job's questions, shared by backup, restore and open.
void addAnswerOptions(CLI::App* command, JobRequest& request) {
    command->add_flag("--yes", request.answers.confirmed,
                      "Confirm, and take the defaults of questions not answered otherwise");
    command->add_option("--key-file", request.keyFile,
                        "A file whose first line is the key (or set STOWHAVEN_KEY; never the key itself here)");
}

}  // namespace

int main(int argc, char** argv) {
    // Sessions hold the user's key and data: what the program makes is root's alone unless
    // it says otherwise. The device's tools get the device's usual umask back (Shell).
    FileModes::keepNewItemsPrivate();
    PrintableOutput::filterStandardStreams();
    MainQueue::shared().bindToCurrentThread();

    CLI::App app{
        "Backs up and restores what the owner has made of the device. Without a command, the main "
        "screen opens on the terminal."};
    app.set_version_flag("--version", std::string("stowhaven ") + STOWHAVEN_VERSION);
    app.require_subcommand(0, 1);

    std::string root = "/";
    bool verbose = false;
    app.add_option("--root", root, "The device root: a folder laid out like the device (\"/\" on the device)")
        ->envname("STOWHAVEN_ROOT");
    app.add_flag("--verbose", verbose, "Also write the log to the terminal");

    bool packagesAsJson = false;
    CLI::App* packages = app.add_subcommand("packages", "List the packages installed on the device");
    packages->add_flag("--json", packagesAsJson, "As a JSON list");

    SettingsCommand settings;
    settings.add(app);

    bool itemsAsJson = false;
    CLI::App* items = app.add_subcommand("items", "List what a backup could hold on the device");
    items->add_flag("--json", itemsAsJson, "As JSON");

    std::string historyFile;
    bool historyViewAsJson = false;
    CLI::App* historyView =
        app.add_subcommand("inspect", "Show the sessions of a history file, an address-book note or a vCard");
    historyView->add_option("file", historyFile, "A .stowhvn file, a note's text or a .vcf file")->required();
    historyView->add_flag("--json", historyViewAsJson, "In JSON, keyed as the archive keys it");

    bool statusAsJson = false;
    CLI::App* statusCommand =
        app.add_subcommand("status", "Load as at start and show the device, the storage and the session");
    statusCommand->add_flag("--json", statusAsJson, "In JSON");

    HistoryCommands history;
    history.add(app);
    DevicesCommand devices;
    devices.add(app);
    SelectCommand select;
    select.add(app);

    CLI::App* storage = app.add_subcommand("storage", "Show the storage engine, or choose another");
    std::optional<std::string> storageEngine;
    CLI::App* storageUse = storage->add_subcommand("use", "Make an engine current and keep it so");
    storageUse->add_option("engine", storageEngine, "local, ftp, dropbox...")->required();
    ServerStorageCommands serverStorage;
    serverStorage.add(*storage);
    OAuthStorageCommands cloudStorage;
    cloudStorage.add(serverStorage.loginGroup(), serverStorage.logoutGroup());
    SugarSyncStorageCommands sugarSyncStorage;
    sugarSyncStorage.add(serverStorage.loginGroup(), serverStorage.logoutGroup());

    ShareCommands share;
    share.add(app);
    VerifyCommand verify;
    verify.add(app);

    std::string openTarget;
    JobRequest openRequest;
    CLI::App* open = app.add_subcommand("open", "Hand the program stowhaven://autobackup or a file to import");
    open->add_option("target", openTarget, "stowhaven://autobackup, or a file")->required();
    open->add_flag("--yes", openRequest.answers.confirmed, "Take the file's session without asking");

    JobRequest backupRequest;
    CLI::App* backup = app.add_subcommand("backup", "Back up the current selection to the current storage");
    addAnswerOptions(backup, backupRequest);
    backup->add_option("--title", backupRequest.answers.title, "The session's title");
    backup->add_option("--description", backupRequest.answers.description, "The session's description");

    RestoreCommand::Request restoreRequest;
    CLI::App* restore =
        app.add_subcommand("restore", "Restore the current session, or another, from the current storage");
    addAnswerOptions(restore, restoreRequest.job);
    restore->add_flag("--fw-compatible-only", restoreRequest.job.answers.firmwareCompatibleOnly,
                      "Restore only the packages made for the device's firmware");
    restore->add_option("--session", restoreRequest.session, "The session's stamp, as the history lists it");
    restore->add_option("--log", restoreRequest.logOf, "Also show the install log of this package");

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        // Help and version end well; every other parse error is a usage error.
        return app.exit(error) == 0 ? 0 : kUsageError;
    }
    if (app.get_subcommands().empty() && !Terminal::isStandardInputATerminal()) {
        std::cerr << "stowhaven: without a command the program needs a terminal to ask on; see stowhaven --help\n";
        return kUsageError;
    }

    if (!becomeRoot()) {
        std::cerr << "stowhaven: must run as root (it installs packages and restores system files)\n";
        return 255;
    }
    Log::setVerbose(verbose);
    bool isDirectory = false;
    if (!FileManager::fileExists(root, isDirectory) || !isDirectory) {
        std::cerr << "stowhaven: the device root <" << root << "> is not a folder\n";
        return kUsageError;
    }
    if (!DeviceRoot::set(root)) {
        std::cerr << "stowhaven: the device root <" << root << "> can't be used\n";
        return kUsageError;
    }

    SH_LOG("systemVersion: {}", DeviceFactsReader::read().systemVersion);
    LanguageOrder::setUp(UserDefaults::standard(), SystemLocale::preferredLanguages());

    // Commands that run no flow still show what goes wrong; the flows answer their own alerts.
    AlertPresenter::setShared(
        std::make_shared<TerminalAlerts>(std::cerr, nullptr, PresetAnswers{}, Terminal::standardErrorWidth()));
    StowhavenAppDelegate::initialize();
    StowhavenAppDelegate delegate;
    delegate.didFinishLaunchingWithOptions();
    watchLifeCycleSignals(&delegate);

    // The command is what the program shows once it is up; when it is done, the user leaves.
    MainQueue::shared().async([&] {
        StowhavenAppDelegate::startupSweep().wait();
        if (const auto missing = missingDeviceTools(); !missing.empty()) {
            std::cerr << "stowhaven: the device has no " << textutil::joined(missing, ", ")
                      << ": the backups and restores that run them will fail\n";
        }
        int status = 0;
        if (app.get_subcommands().empty()) status = InteractiveSession::start(std::cout);
        if (packages->parsed()) status = PackagesCommand::run(packagesAsJson, std::cout, std::cerr);
        if (settings.parsed()) status = settings.run(std::cout, std::cerr);
        if (open->parsed()) {
            const auto presets = openRequest.presets(std::cerr);
            status = presets ? OpenCommand::run(delegate, openTarget, *presets, std::cout, std::cerr) : kUsageError;
        }
        if (items->parsed()) status = ItemsCommand::run(itemsAsJson, std::cout, std::cerr);
        if (serverStorage.parsed()) {
            status = serverStorage.run(std::cout, std::cerr);
        } else if (cloudStorage.parsed()) {
            status = cloudStorage.run(std::cout, std::cerr);
        } else if (sugarSyncStorage.parsed()) {
            status = sugarSyncStorage.run(std::cout, std::cerr);
        } else if (storage->parsed()) {
            status = StorageCommand::run(storageEngine, std::cout, std::cerr);
        }
        if (statusCommand->parsed()) status = StatusCommand::run(statusAsJson, std::cout, std::cerr);
        if (history.parsed()) status = history.run(std::cout, std::cerr);
        if (devices.parsed()) status = devices.run(std::cout, std::cerr);
        if (select.parsed()) status = select.run(std::cout, std::cerr);
        if (backup->parsed()) status = BackupCommand::run(backupRequest, std::cout, std::cerr);
        if (restore->parsed()) status = RestoreCommand::run(restoreRequest, std::cout, std::cerr);
        if (share.parsed()) status = share.run(std::cout, std::cerr);
        if (verify.parsed()) status = verify.run(std::cout, std::cerr);
        if (historyView->parsed())
            status = HistoryViewCommand::run(historyFile, historyViewAsJson, std::cout, std::cerr);
        // A canceled job leaves work on the other threads too (the history's walk, say).
        endWorkInProgress();
        delegate.applicationDidEnterBackground(status);
    });
    MainQueue::shared().run();
}
