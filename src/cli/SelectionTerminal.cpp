#include "cli/SelectionTerminal.h"

#include "cli/TerminalFlow.h"

namespace stowhaven {

void showSelectionScreen(TerminalFlow& flow, FlowScreen /*screen*/) {
    flow.out() << "This screen is not on the terminal yet.\n";
}

}  // namespace stowhaven
