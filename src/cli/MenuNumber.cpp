#include "cli/MenuNumber.h"

#include "core/Text.h"

#include <charconv>
#include <string>

namespace stowhaven {

std::optional<std::size_t> menuNumber(std::string_view typed, std::size_t highest) {
    const std::string text = textutil::trimmed(typed);
    std::size_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || error != std::errc() || end != text.data() + text.size() || value > highest)
        return std::nullopt;
    return value;
}

}  // namespace stowhaven
