#include "cli/FtpStorageCommands.h"

#include "cli/KeyFile.h"
#include "core/Supervisor.h"
#include "platform/AsciiCase.h"
#include "platform/Environment.h"
#include "platform/TerminalInput.h"
#include "storage/ftp/FTPHosts.h"
#include "storage/ftp/FTPLogin.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <nlohmann/json.hpp>

namespace stowhaven {

namespace {

constexpr const char* kMaskedPassword = "********";

bool isCurrentHost(const FTPCredentials& host) {
    const FTPCredentials current = FTPCredentials::current();
    return Supervisor::shared().isStorageFTP() && equalsIgnoringAsciiCase(current.host, host.host) &&
           current.login == host.login;
}

}  // namespace

void FtpStorageCommands::add(CLI::App& storage) {
    login_ = storage.add_subcommand("login", "Log in to a server and make it the storage")->require_subcommand(1);
    CLI::App* loginFtp = login_->add_subcommand("ftp", "An FTP server: proves it, saves it and makes it current");
    loginFtp->add_option("host", host_, "The server's address")->required();
    loginFtp->add_option("--port", port_, "The server's port (21)");
    loginFtp->add_option("--user", user_, "The login");
    loginFtp->add_option("--root", root_, "The program's folder on the server (/Stowhaven)");
    loginFtp->add_flag("--active", active_, "Active mode: the server opens the data connections");
    loginFtp->add_option("--password-file", passwordFile_, "A file whose first line is the password");

    hosts_ = storage.add_subcommand("hosts", "List the saved servers")->require_subcommand(1);
    hosts_->add_subcommand("ftp", "The saved FTP servers")->add_flag("--json", asJson_, "In JSON");

    forget_ = storage.add_subcommand("forget", "Forget a saved server")->require_subcommand(1);
    forget_->add_subcommand("ftp", "A saved FTP server")->add_option("host", host_, "The server's address")->required();

    logout_ =
        storage.add_subcommand("logout", "End the connection and go back to local storage")->require_subcommand(1);
    logout_->add_subcommand("ftp", "The FTP server");
}

bool FtpStorageCommands::parsed() const {
    return login_->parsed() || hosts_->parsed() || forget_->parsed() || logout_->parsed();
}

int FtpStorageCommands::run(std::ostream& out, std::ostream& errors) {
    if (login_->parsed()) return logIn(out, errors);
    if (hosts_->parsed()) return listHosts(out);
    if (forget_->parsed()) return forget(out, errors);
    return logOut(out);
}

std::optional<std::string> FtpStorageCommands::password(std::ostream& errors) const {
    if (passwordFile_) {
        const auto password = passwordFromFile(*passwordFile_);
        if (!password) fmt::print(errors, "stowhaven: no password in <{}>\n", *passwordFile_);
        return password;
    }
    if (auto password = environmentVariable("STOWHAVEN_PASSWORD")) return password;
    fmt::print(errors, "Password for {}@{}: ", user_, host_);
    errors.flush();
    TerminalInput input;
    InputLine line = input.readLine(true);
    if (line.kind != InputLine::Kind::Line) return std::nullopt;
    return line.text;
}

int FtpStorageCommands::logIn(std::ostream& out, std::ostream& errors) {
    const auto secret = password(errors);
    if (!secret) return 1;
    const FTPCredentials host{host_, port_, user_, *secret, root_, !active_};
    if (const auto error = FTPLogin::logIn(host)) {
        fmt::print(errors, "stowhaven: {}\n", *error);
        fmt::print(errors, "Storage stays {}.\n", Supervisor::shared().storageEngineName());
        return 1;
    }
    const FTPCredentials current = FTPCredentials::current();
    fmt::print(out, "Logged in to ftp://{}: sessions go to {}.\nStorage is now FTP.\n", current.host,
               current.homeDirectory(Supervisor::shared().deviceName()));
    return 0;
}

int FtpStorageCommands::listHosts(std::ostream& out) const {
    const auto hosts = FTPHosts::load();
    if (asJson_) {
        nlohmann::json list = nlohmann::json::array();
        for (const FTPCredentials& host : hosts) {
            list.push_back({{"host", host.host},
                            {"port", host.port},
                            {"login", host.login},
                            {"password", kMaskedPassword},
                            {"rootDir", host.rootDirectory},
                            {"passive", host.passive},
                            {"current", isCurrentHost(host)}});
        }
        out << list.dump(2) << '\n';
        return 0;
    }
    if (hosts.empty()) fmt::print(out, "No saved FTP hosts.\n");
    for (const FTPCredentials& host : hosts) {
        fmt::print(out, "{} {}@{}:{} {} ({}, password {})\n", isCurrentHost(host) ? '*' : ' ', host.login, host.host,
                   host.port, host.rootDirectory, host.passive ? "passive" : "active", kMaskedPassword);
    }
    return 0;
}

// Forgetting the host in use forgets its password in the current connection too.
int FtpStorageCommands::forget(std::ostream& out, std::ostream& errors) {
    const bool wasCurrent = equalsIgnoringAsciiCase(FTPCredentials::current().host, host_);
    if (!FTPHosts::forget(host_)) {
        fmt::print(errors, "stowhaven: no saved FTP host <{}>\n", host_);
        return 1;
    }
    if (wasCurrent) {
        if (Supervisor::shared().isStorageFTP()) FTPLogin::logOut();
        FTPCredentials::clearCurrent();
    }
    fmt::print(out, "Forgot {}.\n", host_);
    return 0;
}

int FtpStorageCommands::logOut(std::ostream& out) {
    FTPLogin::logOut();
    fmt::print(out, "Storage is now {}.\n", Supervisor::shared().storageEngineName());
    return 0;
}

}  // namespace stowhaven
