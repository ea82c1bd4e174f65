#pragma once

#include <CLI/CLI.hpp>

#include <optional>
#include <ostream>
#include <string>

namespace stowhaven {

// The SugarSync account as storage, from the command line; it logs in with the user's own
// name and password:
//   storage login sugarsync --user NAME [--password-file FILE]
//   storage logout sugarsync
// The password comes as for the servers' logins, never from an argument. Without a terminal
// to ask on, a login without --user ends with status 2 and says so.
class SugarSyncStorageCommands {
public:
    // Adds the engine to the login and logout groups of "storage".
    void add(CLI::App& login, CLI::App& logout);
    bool parsed() const;
    // The exit status: 1 when the service refused, 2 when the login can't be asked for.
    int run(std::ostream& out, std::ostream& errors);

private:
    int logIn(std::ostream& out, std::ostream& errors);
    int logOut(std::ostream& out);

    CLI::App* login_ = nullptr;
    CLI::App* logout_ = nullptr;
    std::optional<std::string> user_;
    std::optional<std::string> passwordFile_;
};

}  // namespace stowhaven
