#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace stowhaven {

// The number typed for a menu whose rows a screen draws itself: a whole number from 0 to
// HIGHEST, blanks around it allowed; nothing for any other text.
std::optional<std::size_t> menuNumber(std::string_view typed, std::size_t highest);

}  // namespace stowhaven
