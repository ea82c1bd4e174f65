#pragma once

#include "flows/MainScreen.h"

namespace stowhaven {

class TerminalFlow;

// The settings screen on the terminal.
void showSettingsScreen(TerminalFlow& flow);

}  // namespace stowhaven
