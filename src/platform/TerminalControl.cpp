#include "platform/TerminalControl.h"

#include <unistd.h>

#include <cerrno>
#include <iostream>

namespace stowhaven {

bool TerminalControl::isStandardOutputATerminal() { return isatty(STDOUT_FILENO) == 1; }

bool TerminalControl::send(const std::string& sequence) {
    std::cout.flush();
    for (std::size_t written = 0; written < sequence.size();) {
        const ssize_t count = ::write(STDOUT_FILENO, sequence.data() + written, sequence.size() - written);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        written += static_cast<std::size_t>(count);
    }
    return true;
}

}  // namespace stowhaven
