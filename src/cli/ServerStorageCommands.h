#pragma once

#include "cli/ServerEngines.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <ostream>
#include <string>

namespace stowhaven {

// A server of the user's as storage, from the command line, for each engine that logs in
// to one:
//   storage login ftp HOST [--port N] [--user LOGIN] [--root DIR] [--active] [--password-file FILE]
//   storage login owncloud URL [--user LOGIN] [--root DIR] [--password-file FILE]
//   storage hosts ENGINE [--json]
//   storage forget ENGINE HOST
//   storage logout ENGINE
// The password comes from the file's first line, the variable STOWHAVEN_PASSWORD, or a
// question typed without echo; never from an argument.
class ServerStorageCommands {
public:
    void add(CLI::App& storage);
    // The groups that the cloud engines' logins join.
    CLI::App& loginGroup() const { return *login_; }
    CLI::App& logoutGroup() const { return *logout_; }
    // A server engine's subcommand was given.
    bool parsed() const;
    // The exit status: 1 when the server or the user's input can't be taken.
    int run(std::ostream& out, std::ostream& errors);

private:
    // The engine whose subcommand of GROUP was given.
    const ServerEngine* engineOf(const CLI::App* group) const;
    int logIn(const ServerEngine& engine, std::ostream& out, std::ostream& errors);
    int listHosts(const ServerEngine& engine, std::ostream& out) const;
    int forget(const ServerEngine& engine, std::ostream& out, std::ostream& errors);
    int logOut(const ServerEngine& engine, std::ostream& out);

    CLI::App* login_ = nullptr;
    CLI::App* hosts_ = nullptr;
    CLI::App* forget_ = nullptr;
    CLI::App* logout_ = nullptr;
    std::string host_;
    std::string port_;
    std::string user_;
    std::string root_;
    bool active_ = false;
    std::optional<std::string> passwordFile_;
    bool asJson_ = false;
};

}  // namespace stowhaven
