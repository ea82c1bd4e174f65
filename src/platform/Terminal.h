#pragma once

#include <cstddef>

namespace stowhaven {

// What the program's standard streams are connected to.
class Terminal {
public:
    // Standard input is a terminal, where a user types the answers.
    static bool isStandardInputATerminal();
    // Standard error is a terminal, where a line can be redrawn in place.
    static bool isStandardErrorATerminal();
    // The columns of the terminal on standard error; 80 when it is none or doesn't say.
    static std::size_t standardErrorWidth();
};

}  // namespace stowhaven
