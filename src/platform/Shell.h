#pragma once

#include <string>

namespace stowhaven {

// Runs the device's command lines. The system never learns how a command went except
// through the files it was to leave behind.
class Shell {
public:
    virtual ~Shell() = default;

    // Wraps the line as the device's system() call does, runs it and blocks until the
    // shell returns. Output and exit status are thrown away.
    virtual void systemExecute(const std::string& command) = 0;

    // A line that acts on the running machine rather than on files under the device root:
    // its network interface, its processes, a restart. It runs only when the device root is
    // "/"; on any other root the machine at hand is not the device, and the line is logged
    // and left.
    void executeOnRunningSystem(const std::string& command);

    // Ends the command lines running now (a cancel, the program leaving) and returns once
    // they are gone: no tool of the program outlives the job it served. A shell that runs
    // nothing of its own has nothing to end.
    virtual void stopRunningCommands() {}
    // The program is leaving: ends the command lines running now and runs none from then on,
    // so that no tool writes into the temporary folder once it is swept.
    virtual void stopCommandsForGood() {}

    // The folder of the device's own tools, first on the search path of a command line.
    static constexpr const char* kDeviceToolFolder = "/usr/bin";

    // The exact text handed to the shell for a command line, with SEARCHPATHFRONT put first
    // on its search path.
    static std::string wrap(const std::string& command, const std::string& searchPathFront = kDeviceToolFolder);
};

}  // namespace stowhaven
