#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace stowhaven {

// Turns the user's key into the `encryptionKey` text that a session keeps: AES-256 in CBC
// mode with block padding (PKCS#7), the built-in key and initialisation vector, and
// upper-case hexadecimal out. Being fixed, the vector makes the same text encipher to the
// same hexadecimal every time, which is what comparing keys relies on.
class StringCipher {
public:
    // Longer texts are cut to this many characters (UTF-16 units, as the device counts
    // them) before they are enciphered.
    static constexpr std::size_t kMaximumTextLength = 44;

    // The UTF-8 bytes of the (cut) text, enciphered.
    static std::string encrypt(std::string_view text);

    // Nothing for text that isn't hexadecimal (either case), isn't whole blocks, or
    // doesn't decipher to well-padded bytes.
    static std::optional<std::string> decrypt(std::string_view hexText);
};

}  // namespace stowhaven
