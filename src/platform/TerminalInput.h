#pragma once

#include <unistd.h>

#include <atomic>
#include <string>

namespace stowhaven {

// One line typed by the user, or why none came.
struct InputLine {
    enum class Kind { Line, EndOfInput, Interrupted };

    Kind kind;
    std::string text;
};

// Where the answers to the terminal's questions come from.
class LineSource {
public:
    virtual ~LineSource() = default;
    // The next line without its newline. SECRET lines are typed without echo where that can be done.
    virtual InputLine readLine(bool secret) = 0;
};

// Lines from standard input (or another descriptor), read byte by byte up to the newline, so
// that nothing after the line is taken away from the next reader. Another thread may end a
// read under way (Ctrl-C, which the program takes on a thread of its own), which then
// answers Interrupted. A last line without its newline still counts; after it, the end of
// the input or a read error answers EndOfInput.
class TerminalInput final : public LineSource {
public:
    explicit TerminalInput(int descriptor = STDIN_FILENO);
    ~TerminalInput() override;
    TerminalInput(const TerminalInput&) = delete;
    TerminalInput& operator=(const TerminalInput&) = delete;

    // On a terminal a secret line is typed with echo off, put back however the read ends, and
    // a newline goes to standard error after it since the user's Enter was not echoed.
    InputLine readLine(bool secret) override;
    // Ends the read under way, from any thread; false, with nothing done, when none is.
    bool interruptRead();

private:
    InputLine readUpToNewline();
    // Waits until the descriptor can be read; false when the read is interrupted first.
    bool waitForInput();

    int descriptor_;
    // Written to by interruptRead(), to wake the reading thread from its wait.
    int wakeUp_[2] = {-1, -1};
    std::atomic<bool> reading_{false};
};

}  // namespace stowhaven
