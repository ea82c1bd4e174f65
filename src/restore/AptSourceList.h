#pragma once

#include <string>
#include <string_view>

namespace stowhaven {

// The package manager's apt list of sources, one "deb <link> <distribution>" a line, as
// the sources restore reads it and adds to it.
class AptSourceList {
public:
    // Whether a line of LIST says LINE, blanks and line ends around either left aside.
    static bool holds(std::string_view list, std::string_view line);
    // LIST with LINE added as a line of its own at the end.
    static std::string withLine(std::string list, std::string_view line);
};

}  // namespace stowhaven
