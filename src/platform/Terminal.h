#pragma once

namespace stowhaven {

// What the program's standard streams are connected to.
class Terminal {
public:
    // Standard error is a terminal, where a line can be redrawn in place.
    static bool isStandardErrorATerminal();
};

}  // namespace stowhaven
