#include "cli/BrowserLogin.h"

#include "core/Supervisor.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

namespace stowhaven {

BrowserLoginOutcome logInThroughBrowser(OAuthLogin& login, const std::optional<std::string>& answer,
                                        const std::function<std::optional<std::string>()>& readAnswer,
                                        std::ostream& out, std::ostream& errors) {
    std::optional<std::string> given = answer;
    if (!given) {
        std::string error;
        const auto address = login.authorizationAddress(error);
        if (!address) {
            fmt::print(errors, "stowhaven: {}\n", error);
            return BrowserLoginOutcome::Failed;
        }
        fmt::print(out, "Open this address in a browser, on any machine, and allow the access:\n\n  {}\n\n", *address);
        if (!readAnswer) return BrowserLoginOutcome::Unanswered;
        given = readAnswer();
    }
    const auto error =
        given && !given->empty() ? login.finish(*given) : std::optional<std::string>("no answer was given");
    if (error) {
        fmt::print(errors, "stowhaven: {}\n", *error);
        fmt::print(errors, "Storage stays {}.\n", Supervisor::shared().storageEngineName());
        return BrowserLoginOutcome::Failed;
    }
    fmt::print(out, "Logged in as {}.\n", login.accountName());
    return BrowserLoginOutcome::LoggedIn;
}

}  // namespace stowhaven
