#include "cli/OAuthStorageCommands.h"

#include "cli/BrowserLogin.h"
#include "cli/LoginInput.h"
#include "core/Supervisor.h"
#include "platform/Terminal.h"
#include "storage/OAuthLogin.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

namespace stowhaven {

void OAuthStorageCommands::add(CLI::App& login, CLI::App& logout) {
    for (Engine& engine : engines_) {
        engine.login = login.add_subcommand(engine.name, "Log in through the service's page and make it the storage");
        engine.login->add_option("--code", code_,
                                 "What the service handed you after you agreed: the code, or the whole address");
        engine.logout = logout.add_subcommand(engine.name, "End the link with the account");
    }
}

bool OAuthStorageCommands::parsed() const {
    for (const Engine& engine : engines_) {
        if (engine.login->parsed() || engine.logout->parsed()) return true;
    }
    return false;
}

int OAuthStorageCommands::run(std::ostream& out, std::ostream& errors) {
    for (const Engine& engine : engines_) {
        if (engine.login->parsed()) return logIn(engine, out, errors);
        if (engine.logout->parsed()) return logOut(engine, out);
    }
    return 0;
}

int OAuthStorageCommands::logIn(const Engine& engine, std::ostream& out, std::ostream& errors) {
    const auto login = makeOAuthLogin(engine.type);
    if (!login) {
        fmt::print(errors, "stowhaven: the {} engine is not available in this build\n", engine.name);
        return 1;
    }
    std::function<std::optional<std::string>()> readAnswer;
    if (Terminal::isStandardInputATerminal()) readAnswer = [&out] { return askOnTerminal(kBrowserLoginQuestion, out); };
    switch (logInThroughBrowser(*login, code_, readAnswer, out, errors)) {
        case BrowserLoginOutcome::LoggedIn:
            fmt::print(out, "Storage is now {}.\n", Supervisor::shared().storageEngineName());
            return 0;
        case BrowserLoginOutcome::Failed:
            return 1;
        case BrowserLoginOutcome::Unanswered:
            break;
    }
    fmt::print(errors,
               "stowhaven: no terminal to read the answer on: run \"stowhaven storage login {} --code VALUE\" with "
               "the code, or the whole address, that the service handed you\n",
               engine.name);
    return 2;
}

int OAuthStorageCommands::logOut(const Engine& engine, std::ostream& out) {
    if (const auto login = makeOAuthLogin(engine.type)) login->logOut();
    fmt::print(out, "Logged out of {}.\nStorage is now {}.\n", engine.name, Supervisor::shared().storageEngineName());
    return 0;
}

}  // namespace stowhaven
