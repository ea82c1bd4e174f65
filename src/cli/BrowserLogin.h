#pragma once

#include "storage/OAuthLogin.h"

#include <functional>
#include <optional>
#include <ostream>
#include <string>

namespace stowhaven {

enum class BrowserLoginOutcome {
    LoggedIn,
    // The engine can't log in, the service refused, or the user gave no answer; it said why.
    Failed,
    // No answer given and no way to ask for one.
    Unanswered,
};

// The login of a cloud engine through the service's page: with ANSWER, it is taken at once;
// otherwise the address to open is shown and READANSWER asks for what the service handed the
// user (none when there is nobody to ask). Messages go to OUT, refusals to ERRORS.
BrowserLoginOutcome logInThroughBrowser(OAuthLogin& login, const std::optional<std::string>& answer,
                                        const std::function<std::optional<std::string>()>& readAnswer,
                                        std::ostream& out, std::ostream& errors);

// The question READANSWER puts.
inline constexpr const char* kBrowserLoginQuestion = "Paste the code, or the whole address the service sent you to: ";

}  // namespace stowhaven
