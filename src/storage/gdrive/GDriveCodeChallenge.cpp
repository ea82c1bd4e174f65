#include "storage/gdrive/GDriveCodeChallenge.h"

#include "archive/Base64.h"

#include <openssl/rand.h>
#include <openssl/sha.h>

#include <array>

namespace stowhaven {

namespace {

std::string base64Url(std::string_view bytes) {
    std::string text = Base64::encode(bytes);
    while (!text.empty() && text.back() == '=') text.pop_back();
    for (char& c : text) {
        if (c == '+') c = '-';
        if (c == '/') c = '_';
    }
    return text;
}

}  // namespace

std::optional<GDriveCodeChallenge> GDriveCodeChallenge::make() {
    std::array<unsigned char, 32> bytes{};
    if (RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) != 1) return std::nullopt;
    std::string verifier = base64Url(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    std::string challenge = challengeOf(verifier);
    return GDriveCodeChallenge{std::move(verifier), std::move(challenge)};
}

std::string GDriveCodeChallenge::challengeOf(std::string_view verifier) {
    std::array<unsigned char, SHA256_DIGEST_LENGTH> digest{};
    SHA256(reinterpret_cast<const unsigned char*>(verifier.data()), verifier.size(), digest.data());
    return base64Url(std::string_view(reinterpret_cast<const char*>(digest.data()), digest.size()));
}

}  // namespace stowhaven
