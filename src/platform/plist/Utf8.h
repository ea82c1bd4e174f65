#pragma once

#include <string_view>

namespace stowhaven {

// True if `text` is well-formed UTF-8: complete sequences in their shortest form, no
// surrogates, nothing above U+10FFFF.
bool isValidUtf8(std::string_view text);

}  // namespace stowhaven
