#pragma once

#include <ostream>

namespace stowhaven {

class TerminalFlow;

// "stowhaven" alone: the main screen on a terminal, in plain lines that work over SSH. It
// shows the mode, the storage and the labels of the session, and offers the main screen's
// buttons as a numbered menu: the job of the mode, the switch of mode, the storage's
// backups, the choice of storage, the settings and the restore log. The screens that the
// flow opens are shown between two menus.
class InteractiveSession {
public:
    // Starts the flow as the program's first screen: an automatic backup may follow the load.
    static int start(std::ostream& out);
    // Goes on with a flow already up. Answers 0 when the user quits, 130 when the user
    // leaves by Ctrl-C or the end of the input.
    static int run(TerminalFlow& flow);
};

}  // namespace stowhaven
