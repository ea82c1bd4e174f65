#include "platform/TerminalInput.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <optional>

namespace stowhaven {

namespace {

// The terminal's echo off for as long as the object lives; nothing when the descriptor is no terminal.
class EchoOff {
public:
    explicit EchoOff(int descriptor) : descriptor_(descriptor) {
        if (isatty(descriptor_) != 1 || tcgetattr(descriptor_, &saved_) != 0) return;
        termios quiet = saved_;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        // TCSANOW rather than TCSAFLUSH: what was typed ahead is kept.
        active_ = tcsetattr(descriptor_, TCSANOW, &quiet) == 0;
    }
    ~EchoOff() {
        if (active_) tcsetattr(descriptor_, TCSANOW, &saved_);
    }
    EchoOff(const EchoOff&) = delete;
    EchoOff& operator=(const EchoOff&) = delete;

    bool active() const { return active_; }

private:
    int descriptor_;
    termios saved_{};
    bool active_ = false;
};

}  // namespace

TerminalInput::TerminalInput(int descriptor) : descriptor_(descriptor) {
    if (pipe2(wakeUp_, O_CLOEXEC | O_NONBLOCK) != 0) wakeUp_[0] = wakeUp_[1] = -1;
}

TerminalInput::~TerminalInput() {
    for (const int end : wakeUp_) {
        if (end >= 0) close(end);
    }
}

InputLine TerminalInput::readLine(bool secret) {
    // A wake-up that came after the last read had ended is for no read.
    char stale[16];
    while (wakeUp_[0] >= 0 && read(wakeUp_[0], stale, sizeof stale) > 0) {
    }
    reading_ = true;
    std::optional<EchoOff> echoOff;
    if (secret) echoOff.emplace(descriptor_);
    InputLine line = readUpToNewline();
    reading_ = false;
    if (echoOff && echoOff->active() && line.kind == InputLine::Kind::Line) {
        [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, "\n", 1);
    }
    return line;
}

bool TerminalInput::interruptRead() {
    if (!reading_ || wakeUp_[1] < 0) return false;
    const char byte = 0;
    return write(wakeUp_[1], &byte, 1) == 1;
}

bool TerminalInput::waitForInput() {
    pollfd watched[2] = {{descriptor_, POLLIN, 0}, {wakeUp_[0], POLLIN, 0}};
    while (poll(watched, 2, -1) < 0) {
        if (errno != EINTR) return true;  // the read that follows tells what went wrong
    }
    return (watched[1].revents & POLLIN) == 0;
}

InputLine TerminalInput::readUpToNewline() {
    std::string text;
    while (true) {
        if (!waitForInput()) return {InputLine::Kind::Interrupted, {}};
        char byte = 0;
        const ssize_t count = read(descriptor_, &byte, 1);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) {
            if (text.empty()) return {InputLine::Kind::EndOfInput, {}};
            return {InputLine::Kind::Line, std::move(text)};
        }
        if (byte == '\n') return {InputLine::Kind::Line, std::move(text)};
        text += byte;
    }
}

}  // namespace stowhaven
