#pragma once

#include "storage/StorageType.h"

#include <array>
#include <memory>
#include <optional>
#include <string>

namespace stowhaven {

// The login of an engine whose service lends the program a token once the user has agreed
// in a browser, on any machine: the program shows an address, the user opens it and hands
// back what the service gave them at its end (a code, or the whole address it sent them to).
class OAuthLogin {
public:
    virtual ~OAuthLogin() = default;

    // The address to open; none, with ERROR, when the engine can't log in at all (no app
    // key). May remember what the answer is checked against (a state nonce) in the settings.
    virtual std::optional<std::string> authorizationAddress(std::string& error) = 0;
    // Takes the user's answer: the tokens are fetched and stored in the settings and the
    // engine becomes the current one, kept so. Nothing on success, otherwise the service's
    // message (a refused or expired grant) or what was wrong with the answer.
    virtual std::optional<std::string> finish(const std::string& answer) = 0;
    // The account's name, once logged in, for the message that says so.
    virtual std::string accountName() = 0;
    // Forgets the tokens (the link with the account ends) and goes back to local storage,
    // kept so, when the engine was current.
    virtual void logOut() = 0;
};

// The login of an engine of that type; none for engines that log in otherwise.
std::unique_ptr<OAuthLogin> makeOAuthLogin(StorageType type);

// What the logins share: 16 bytes from the system's secure generator for the state that an
// answer is checked against (none when it fails), and, once the tokens are forgotten, local
// storage in the engine's place, kept so, when the engine was current or the stored choice.
std::optional<std::array<unsigned char, 16>> loginStateBytes();
void leaveLoggedOutEngine(StorageType type);

}  // namespace stowhaven
