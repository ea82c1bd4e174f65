#pragma once

#include "flows/MainScreen.h"

namespace stowhaven {

class TerminalFlow;

// The selection screens on the terminal.
void showSelectionScreen(TerminalFlow& flow, FlowScreen screen);

}  // namespace stowhaven
