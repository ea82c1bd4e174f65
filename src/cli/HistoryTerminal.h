#pragma once

#include "flows/MainScreen.h"

namespace stowhaven {

class TerminalFlow;

// The sessions of this device and the backups of every device, on the terminal.
void showBackupSessionsScreen(TerminalFlow& flow);
void showDeviceBackupsScreen(TerminalFlow& flow);

}  // namespace stowhaven
