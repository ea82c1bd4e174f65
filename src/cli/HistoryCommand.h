#pragma once

#include <ostream>

namespace stowhaven {

// "stowhaven history": loads as the program does at start, fetches every history file of
// the device from the current engine, and lists the sessions, newest first.
class HistoryCommand {
public:
    static int run(bool asJson, std::ostream& out, std::ostream& errors);
};

}  // namespace stowhaven
