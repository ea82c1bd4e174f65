#include "archive/StringCipher.h"

#include "archive/BuiltInCipherKey.h"
#include "core/Text.h"
#include "platform/Log.h"

#include <openssl/evp.h>

#include <climits>
#include <memory>
#include <stdexcept>

namespace stowhaven {

namespace {

constexpr std::size_t kBlockSize = 16;
constexpr std::string_view kHexDigits = "0123456789ABCDEF";

struct CipherContextDeleter {
    void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
};
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, CipherContextDeleter>;

std::optional<std::string> bytesFromHex(std::string_view hex) {
    if (hex.size() % 2 != 0) return std::nullopt;
    std::string bytes;
    bytes.reserve(hex.size() / 2);
    for (std::size_t index = 0; index < hex.size(); index += 2) {
        const int high = textutil::hexDigitValue(hex[index]);
        const int low = textutil::hexDigitValue(hex[index + 1]);
        if (high < 0 || low < 0) return std::nullopt;
        bytes += static_cast<char>(high << 4 | low);
    }
    return bytes;
}

std::string hexFromBytes(std::string_view bytes) {
    std::string hex;
    hex.reserve(bytes.size() * 2);
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        hex += kHexDigits[value >> 4];
        hex += kHexDigits[value & 0xF];
    }
    return hex;
}

// The longest start of UTF-8 text that is at most `length` UTF-16 units long. A
// character beyond U+FFFF takes two units and is left out whole rather than split.
std::string_view prefixOfUtf16Length(std::string_view text, std::size_t length) {
    std::size_t units = 0;
    for (std::size_t position = 0; position < text.size();) {
        const auto lead = static_cast<unsigned char>(text[position]);
        const std::size_t sequenceLength = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
        units += sequenceLength == 4 ? 2 : 1;
        if (units > length) return text.substr(0, position);
        position += sequenceLength;
    }
    return text;
}

// Nothing when libcrypto refuses the input: on the way back, bad padding.
std::optional<std::string> runCipher(std::string_view input, bool encrypting) {
    static const std::string key = *bytesFromHex(BuiltInCipherKey::kKeyHex);
    static const std::string initialisationVector = *bytesFromHex(BuiltInCipherKey::kInitialisationVectorHex);
    const CipherContext context(EVP_CIPHER_CTX_new());
    if (!context || EVP_CipherInit_ex(
                        context.get(), EVP_aes_256_cbc(), nullptr, reinterpret_cast<const unsigned char*>(key.data()),
                        reinterpret_cast<const unsigned char*>(initialisationVector.data()), encrypting ? 1 : 0) != 1) {
        throw std::runtime_error("libcrypto couldn't set up AES-256-CBC");
    }
    std::string output(input.size() + kBlockSize, '\0');
    auto* out = reinterpret_cast<unsigned char*>(output.data());
    int updated = 0;
    int finished = 0;
    if (EVP_CipherUpdate(context.get(), out, &updated, reinterpret_cast<const unsigned char*>(input.data()),
                         static_cast<int>(input.size())) != 1 ||
        EVP_CipherFinal_ex(context.get(), out + updated, &finished) != 1) {
        return std::nullopt;
    }
    output.resize(static_cast<std::size_t>(updated + finished));
    return output;
}

}  // namespace

std::string StringCipher::encrypt(std::string_view text) {
    const auto ciphertext = runCipher(prefixOfUtf16Length(text, kMaximumTextLength), true);
    if (!ciphertext) throw std::runtime_error("libcrypto refused to encipher a text");
    return hexFromBytes(*ciphertext);
}

std::optional<std::string> StringCipher::decrypt(std::string_view hexText) {
    const auto ciphertext = bytesFromHex(hexText);
    if (!ciphertext || ciphertext->empty() || ciphertext->size() % kBlockSize != 0 ||
        ciphertext->size() > INT_MAX - kBlockSize) {
        SH_LOG("Refused to decipher {} characters that aren't whole blocks in hexadecimal", hexText.size());
        return std::nullopt;
    }
    auto text = runCipher(*ciphertext, false);
    if (!text) SH_LOG("Refused to decipher a text that wasn't enciphered with the built-in key");
    return text;
}

}  // namespace stowhaven
