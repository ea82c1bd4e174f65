#pragma once

#include "cli/TextWrap.h"

#include <cstddef>
#include <sstream>
#include <string>

namespace stowhaven::test {

// The lines of a terminal's screen written wider than WIDTH columns, which the terminal
// would break wherever its edge falls; what a carriage return went back over is drawn over.
inline std::string linesWiderThan(const std::string& screen, std::size_t width) {
    std::istringstream lines(screen);
    std::string wider;
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        const std::string shown = line.substr(line.rfind('\r') == std::string::npos ? 0 : line.rfind('\r') + 1);
        if (columnCount(shown) > width) wider += shown + "\n";
    }
    return wider;
}

}  // namespace stowhaven::test
