#include "cli/ShareTerminal.h"

#include "cli/TerminalFlow.h"

namespace stowhaven {

void showShareMenu(TerminalFlow& flow) { flow.out() << "This screen is not on the terminal yet.\n"; }

}  // namespace stowhaven
