#include "platform/plist/Utf8.h"

#include <cstdint>

namespace stowhaven {

bool isValidUtf8(std::string_view text) {
    std::size_t i = 0;
    while (i < text.size()) {
        const auto lead = static_cast<std::uint8_t>(text[i]);
        if (lead < 0x80) {
            ++i;
            continue;
        }
        std::size_t length = 0;
        // The second byte's range narrows where an overlong form or a surrogate would follow.
        std::uint8_t secondLow = 0x80;
        std::uint8_t secondHigh = 0xBF;
        if (lead >= 0xC2 && lead <= 0xDF) {
            length = 2;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            length = 3;
            if (lead == 0xE0) secondLow = 0xA0;
            if (lead == 0xED) secondHigh = 0x9F;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            length = 4;
            if (lead == 0xF0) secondLow = 0x90;
            if (lead == 0xF4) secondHigh = 0x8F;
        } else {
            return false;
        }
        if (text.size() - i < length) return false;
        for (std::size_t k = 1; k < length; ++k) {
            const auto byte = static_cast<std::uint8_t>(text[i + k]);
            const bool second = k == 1;
            if (byte < (second ? secondLow : 0x80) || byte > (second ? secondHigh : 0xBF)) return false;
        }
        i += length;
    }
    return true;
}

}  // namespace stowhaven
