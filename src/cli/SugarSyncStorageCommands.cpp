#include "cli/SugarSyncStorageCommands.h"

#include "cli/LoginInput.h"
#include "core/Supervisor.h"
#include "platform/Terminal.h"
#include "storage/sugarsync/SugarSyncLogin.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

namespace stowhaven {

void SugarSyncStorageCommands::add(CLI::App& login, CLI::App& logout) {
    login_ =
        login.add_subcommand("sugarsync", "Log in with the account's own name and password and make it the storage");
    login_->add_option("--user", user_, "The account's login");
    login_->add_option("--password-file", passwordFile_, "A file whose first line is the password");
    logout_ = logout.add_subcommand("sugarsync", "Forget the account's login and password");
}

bool SugarSyncStorageCommands::parsed() const { return login_->parsed() || logout_->parsed(); }

int SugarSyncStorageCommands::run(std::ostream& out, std::ostream& errors) {
    return login_->parsed() ? logIn(out, errors) : logOut(out);
}

int SugarSyncStorageCommands::logIn(std::ostream& out, std::ostream& errors) {
    if (!user_) {
        if (!Terminal::isStandardInputATerminal()) {
            fmt::print(errors,
                       "stowhaven: no terminal to ask for the login on: run \"stowhaven storage login sugarsync "
                       "--user NAME\"\n");
            return 2;
        }
        user_ = askOnTerminal("SugarSync login: ", out);
        if (!user_) return 1;
    }
    const auto password = readPassword(passwordFile_, fmt::format("Password for {}: ", *user_), errors);
    if (!password) return 1;
    SugarSyncLogin login;
    if (const auto error = login.logIn(*user_, *password)) {
        fmt::print(errors, "stowhaven: {}\n", *error);
        fmt::print(errors, "Storage stays {}.\n", Supervisor::shared().storageEngineName());
        return 1;
    }
    fmt::print(out, "Logged in as {}.\nStorage is now {}.\n", login.accountName(),
               Supervisor::shared().storageEngineName());
    return 0;
}

int SugarSyncStorageCommands::logOut(std::ostream& out) {
    SugarSyncLogin::logOut();
    fmt::print(out, "Logged out of sugarsync.\nStorage is now {}.\n", Supervisor::shared().storageEngineName());
    return 0;
}

}  // namespace stowhaven
