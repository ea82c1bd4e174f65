#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace stowhaven {

// The proof key of an OAuth 2 code exchange (S256): a verifier of 32 random bytes, in
// Base64url without padding, and its challenge, the same encoding of its SHA-256.
struct GDriveCodeChallenge {
    std::string verifier;
    std::string challenge;

    // None when the system's secure generator fails.
    static std::optional<GDriveCodeChallenge> make();
    static std::string challengeOf(std::string_view verifier);
};

}  // namespace stowhaven
