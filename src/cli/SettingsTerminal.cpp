#include "cli/SettingsTerminal.h"

#include "cli/TerminalFlow.h"

namespace stowhaven {

void showSettingsScreen(TerminalFlow& flow) { flow.out() << "This screen is not on the terminal yet.\n"; }

}  // namespace stowhaven
