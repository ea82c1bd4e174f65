#pragma once

#include <string>

namespace stowhaven {

// Control sequences for the terminal on standard output, which the printable filter of the
// standard streams would otherwise break (PrintableOutput). Only for sequences that the
// program builds itself, with nothing read from outside in them but in an encoded form.
class TerminalControl {
public:
    static bool isStandardOutputATerminal();
    // Writes SEQUENCE after what std::cout holds; false when it could not be written whole.
    static bool send(const std::string& sequence);
};

}  // namespace stowhaven
