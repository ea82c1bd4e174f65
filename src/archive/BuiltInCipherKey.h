#pragma once

#include <string_view>

namespace stowhaven {

// The cipher values built into the system. Sessions and files enciphered by an
// installation with other values can't be read here, so they never change.
struct BuiltInCipherKey {
    // The string cipher's initialisation vector: 16 bytes in hexadecimal.
    static constexpr std::string_view kInitialisationVectorHex = "9383DBE9656612BF8F6EAF90C949CF04";
    // The string cipher's AES-256 key: 32 bytes in hexadecimal. The same 64 characters,
    // taken as text, are the pass phrase of the file cipher.
    static constexpr std::string_view kKeyHex = "79E138556F2D84C1771E3BF11D06476832E8D5EF6FD1070F148438F0F17694A2";
};

}  // namespace stowhaven
