#include "platform/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace stowhaven {

bool Terminal::isStandardInputATerminal() { return isatty(STDIN_FILENO) == 1; }

bool Terminal::isStandardErrorATerminal() { return isatty(STDERR_FILENO) == 1; }

std::size_t Terminal::standardErrorWidth() {
    winsize size = {};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return 80;
    return size.ws_col;
}

}  // namespace stowhaven
