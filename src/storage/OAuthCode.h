#pragma once

#include <optional>
#include <string>

namespace stowhaven {

// The code of an OAuth 2 answer: the user hands back the code alone, or the whole address
// the service's page sent them to ("http://localhost?code=...&state=..."), or its query.
// A refusal on the page answers the service's words; a state that isn't the one kept under
// STATEKEY when the address was made answers that the answer belongs to another login.
struct OAuthCode {
    std::optional<std::string> code;
    // Why there is no code; empty with a code.
    std::string error;

    static OAuthCode of(const std::string& answer, const char* stateKey, const std::string& serviceName);
};

// A fresh state for an authorisation address, kept under STATEKEY; none when the system's
// secure generator fails.
std::optional<std::string> newLoginState(const char* stateKey);

}  // namespace stowhaven
