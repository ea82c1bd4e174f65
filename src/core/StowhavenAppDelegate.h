#pragma once

#include <future>
#include <optional>
#include <string>

namespace stowhaven {

// How the program starts, takes its settings in, takes URLs and files from outside, and
// ends. A terminal program lives through the events of the device's applications thus:
//
//   start               initialize(), then didFinishLaunchingWithOptions()
//   its command ends    applicationDidEnterBackground(): the user leaves
//   SIGHUP              applicationDidEnterBackground(): the terminal went away
//   SIGTERM             applicationWillTerminate(): the system ends the program
//   SIGCONT             applicationWillEnterForeground(): back after a stop (Ctrl-Z, fg)
//
// Each ending event ends the process, as leaving does on the device. The events run on
// the main thread.
class StowhavenAppDelegate {
public:
    // The one command of the program's URL scheme.
    static constexpr const char* kAutobackupURL = "stowhaven://autobackup";

    // The class start-up, once, before any delegate exists: the settings, their flags and
    // the sweep of temporary files on the background queue.
    static void initialize();
    // Registers the defaults of the settings table.
    static void setupUserDefaults();
    // Mirrors the settings into the process-wide flags and stores what must exist; at start
    // and on each return to the foreground.
    static void refreshPreferences();
    // The end of the sweep that initialize() sent to the background. Work that uses
    // temporary files waits for it, or the sweep could take them.
    static std::shared_future<void> startupSweep();

    // The program is up: a reset asked for in the settings happens now, and ends the process.
    void didFinishLaunchingWithOptions();
    // "stowhaven://autobackup" turns automatic backup on for this run only; a file URL
    // ("file:///path") is kept for import. Anything else is left alone.
    void openURL(const std::string& url, const std::optional<std::string>& sourceApplication);

    // Each ends the process with the status, 0 when the user or the system sends it away.
    void applicationDidEnterBackground(int exitStatus);
    void applicationWillTerminate();

    // Takes the settings again, since they may have changed while the program was away.
    void applicationWillEnterForeground();
    // Lets go of what the program holds on the device: battery monitoring, temporary files.
    void stopEverything();
};

}  // namespace stowhaven
