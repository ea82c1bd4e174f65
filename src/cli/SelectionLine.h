#pragma once

#include "flows/SelectionRow.h"

#include <string>

namespace stowhaven {

// A line of a selection list as the terminal shows it: "[x] Title [key] 1.250 Mb", the key
// left out where it is the title and the size where it means nothing.
std::string selectionLine(const SelectionRow& row);

}  // namespace stowhaven
