#pragma once

#include <CLI/CLI.hpp>

#include <optional>
#include <ostream>
#include <string>

namespace stowhaven {

// The FTP server as storage, from the command line:
//   storage login ftp HOST [--port N] [--user LOGIN] [--root DIR] [--active] [--password-file FILE]
//   storage hosts ftp [--json]
//   storage forget ftp HOST
//   storage logout ftp
// The password comes from the file's first line, the variable STOWHAVEN_PASSWORD, or a
// question typed without echo; never from an argument.
class FtpStorageCommands {
public:
    void add(CLI::App& storage);
    bool parsed() const;
    // The exit status: 1 when the server or the user's input can't be taken.
    int run(std::ostream& out, std::ostream& errors);

private:
    int logIn(std::ostream& out, std::ostream& errors);
    int listHosts(std::ostream& out) const;
    int forget(std::ostream& out, std::ostream& errors);
    int logOut(std::ostream& out);
    std::optional<std::string> password(std::ostream& errors) const;

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
