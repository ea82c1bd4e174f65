#pragma once

#include "flows/MainScreen.h"

namespace stowhaven {

class TerminalFlow;

// The sharing actions of the main screen's options, on the terminal.
void showShareMenu(TerminalFlow& flow);

}  // namespace stowhaven
