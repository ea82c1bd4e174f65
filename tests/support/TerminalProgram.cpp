#include "support/TerminalProgram.h"

#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

namespace stowhaven::test {

namespace {

// Only a hung program waits this long; every wait ends as soon as the screen shows the text.
constexpr int kLongestQuietMilliseconds = 120 * 1000;

std::size_t occurrences(const std::string& screen, const std::string& text) {
    std::size_t count = 0;
    for (auto at = screen.find(text); at != std::string::npos; at = screen.find(text, at + text.size())) ++count;
    return count;
}

}  // namespace

TerminalProgram::TerminalProgram(const std::string& arguments, const std::string& prefix) {
    winsize size{};
    size.ws_row = 24;
    size.ws_col = 80;
    child_ = forkpty(&terminal_, nullptr, nullptr, &size);
    if (child_ == 0) {
        // The shell gives way to the program, so that Ctrl-C and the exit status are its own.
        const std::string command = "exec " + prefix + STOWHAVEN_PROGRAM + " " + arguments;
        execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
}

TerminalProgram::~TerminalProgram() {
    if (child_ > 0) {
        signal(SIGKILL);
        waitpid(child_, nullptr, 0);
    }
    if (terminal_ >= 0) close(terminal_);
}

bool TerminalProgram::readMore() {
    pollfd ready{terminal_, POLLIN, 0};
    if (poll(&ready, 1, kLongestQuietMilliseconds) <= 0) return false;
    char buffer[4096];
    const ssize_t count = read(terminal_, buffer, sizeof buffer);
    if (count <= 0) return count < 0 && errno == EINTR;
    screen_.append(buffer, static_cast<std::size_t>(count));
    return true;
}

bool TerminalProgram::waitFor(const std::string& text, int count) {
    while (occurrences(screen_, text) < static_cast<std::size_t>(count)) {
        if (!readMore()) return false;
    }
    return true;
}

void TerminalProgram::type(const std::string& text) const {
    for (std::size_t written = 0; written < text.size();) {
        const ssize_t count = write(terminal_, text.data() + written, text.size() - written);
        if (count <= 0) return;
        written += static_cast<std::size_t>(count);
    }
}

// The program leads a session of its own on the terminal; the tools it runs lead process
// groups of their own, which this doesn't reach.
void TerminalProgram::signal(int number) const {
    if (child_ > 0) kill(-child_, number);
}

int TerminalProgram::finish() {
    while (readMore()) {
    }
    int status = 0;
    if (child_ <= 0 || waitpid(child_, &status, 0) != child_) return -1;
    child_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace stowhaven::test
