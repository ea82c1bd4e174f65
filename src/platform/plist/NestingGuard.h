#pragma once

#include <cstddef>
#include <string_view>

namespace stowhaven {

// libplist 2.2 reads, writes and frees property lists by recursion, so nesting deep enough
// overflows the stack. These look at the input before libplist does and answer whether it
// nests arrays and dictionaries no deeper than `maximumDepth` levels (a top-level array
// is one level).

// False also when the object table can't be followed: references out of range, damaged
// counts, a cycle, or a dictionary key that is not a string free of NULs. libplist
// refuses such input too, or aborts on it.
bool binaryPlistNestingWithin(std::string_view bytes, std::size_t maximumDepth);

// Counts <array> and <dict> elements, leaving out comments, CDATA and declarations.
bool xmlPlistNestingWithin(std::string_view text, std::size_t maximumDepth);

}  // namespace stowhaven
