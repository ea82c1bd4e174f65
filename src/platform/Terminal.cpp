#include "platform/Terminal.h"

#include <unistd.h>

namespace stowhaven {

bool Terminal::isStandardErrorATerminal() { return isatty(STDERR_FILENO) == 1; }

}  // namespace stowhaven
