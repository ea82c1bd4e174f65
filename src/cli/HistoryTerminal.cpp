#include "cli/HistoryTerminal.h"

#include "cli/TerminalFlow.h"

namespace stowhaven {

void showBackupSessionsScreen(TerminalFlow& flow) { flow.out() << "This screen is not on the terminal yet.\n"; }

void showDeviceBackupsScreen(TerminalFlow& flow) { flow.out() << "This screen is not on the terminal yet.\n"; }

}  // namespace stowhaven
