#pragma once

#include <sys/types.h>

#include <string>

namespace stowhaven::test {

// The built program on a terminal of its own (a pseudo-terminal of 80 columns), as a person
// at the device runs it: the test reads what the screen shows and types answers.
class TerminalProgram {
public:
    // Starts the program with ARGUMENTS, a command-line text, after PREFIX (such as a command
    // that runs the program in a mount namespace of its own, as ProgramRun's environment).
    explicit TerminalProgram(const std::string& arguments, const std::string& prefix = "");
    // Ends the program if it still runs.
    ~TerminalProgram();
    TerminalProgram(const TerminalProgram&) = delete;
    TerminalProgram& operator=(const TerminalProgram&) = delete;

    // Reads the screen until TEXT has shown COUNT times in all; false when the program ends
    // first, or shows nothing new for two minutes.
    bool waitFor(const std::string& text, int count = 1);
    void type(const std::string& text) const;
    // Reads the screen to the program's end and answers its exit status; -1 when a signal
    // ended it.
    int finish();
    // Sends the signal to the program's process group on its terminal: SIGSTOP holds the
    // program where it is, SIGKILL ends it as a crash would. The tools it runs stand in
    // process groups of their own and go on to their end, as on the device.
    void signal(int number) const;

    // Everything the screen showed so far, logs included with --verbose.
    const std::string& screen() const { return screen_; }

private:
    // Appends what the terminal has next; false at the program's end or after the wait.
    bool readMore();

    int terminal_ = -1;
    pid_t child_ = -1;
    std::string screen_;
};

}  // namespace stowhaven::test
