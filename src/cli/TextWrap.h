#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace stowhaven {

// Texts measured in terminal columns, one for each UTF-8 character ("™" is one, not three).

std::size_t columnCount(std::string_view text);

// The start of TEXT that fills at most COLUMNS columns, never cutting a character apart.
std::string_view leadingColumns(std::string_view text, std::size_t columns);

// Broken at spaces into lines of at most WIDTH columns; a word longer than that stays whole
// on a line of its own. The newlines already there, and the lines that fit, stay as they are.
std::string wrapped(std::string_view text, std::size_t width);

// TEXT wrapped to WIDTH behind LEAD (a menu's "  1) ", a label's column), its further lines
// indented to stand under its first.
std::string wrappedBehind(std::string_view lead, std::string_view text, std::size_t width);

}  // namespace stowhaven
