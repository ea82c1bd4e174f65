#pragma once

#include <ostream>
#include <string>

namespace stowhaven {

// What the program prints holds texts it read from outside (a session's package names,
// titles, an archive's member names): a control character among them could move the
// terminal's cursor, rewrite a line or change its settings. Every byte below 0x20 but line
// breaks and tabs, and DEL, is printed as "?"; only the progress line goes back to the
// start of its line, through returnToLineStart.
namespace PrintableOutput {

char printable(char c);
std::string printable(std::string text);

// Puts the filter between std::cout and std::cerr and what they write to, for the rest of
// the program's life.
void filterStandardStreams();

// Writes a carriage return to OUT, past the filter when OUT has it.
void returnToLineStart(std::ostream& out);

}  // namespace PrintableOutput

}  // namespace stowhaven
