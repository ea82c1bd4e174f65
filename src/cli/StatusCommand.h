#pragma once

#include <ostream>

namespace stowhaven {

// "stowhaven status": loads as the program does at start, then shows the device's status,
// the storage engine and the current session; the load's message where it has one.
class StatusCommand {
public:
    static int run(bool asJson, std::ostream& out, std::ostream& errors);
};

}  // namespace stowhaven
