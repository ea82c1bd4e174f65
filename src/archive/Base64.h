#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace stowhaven {

// Base64 of RFC 4648: the standard alphabet, "=" padding, one line.
class Base64 {
public:
    static std::string encode(std::string_view bytes);

    // Line breaks, blanks and tabs anywhere are skipped, as a folded or hand-copied text
    // has them. Nothing for any other character outside the alphabet, padding that isn't
    // at the end, or a length that isn't a whole number of four-character groups.
    static std::optional<std::string> decode(std::string_view text);
};

}  // namespace stowhaven
