#include "cli/ServerStorageCommands.h"

#include "cli/LoginInput.h"
#include "core/Supervisor.h"
#include "platform/AsciiCase.h"
#include "storage/ServerHosts.h"
#include "storage/ServerLogin.h"
#include "storage/StorageLayout.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <nlohmann/json.hpp>

namespace stowhaven {

namespace {

constexpr const char* kMaskedPassword = "********";

bool isCurrentHost(const ServerEngine& engine, const ServerCredentials& host) {
    const ServerCredentials current = ServerCredentials::current(*engine.settings);
    return Supervisor::shared().currentStorageType() == engine.type &&
           equalsIgnoringAsciiCase(current.host, host.host) && current.login == host.login;
}

std::string hostLine(const ServerEngine& engine, const ServerCredentials& host) {
    const std::string port = engine.takesPortAndMode ? ":" + host.port : "";
    const std::string mode = engine.takesPortAndMode ? (host.passive ? "passive, " : "active, ") : "";
    return fmt::format("{} {}@{}{} {} ({}password {})", isCurrentHost(engine, host) ? '*' : ' ', host.login, host.host,
                       port, host.rootDirectory, mode, kMaskedPassword);
}

}  // namespace

void ServerStorageCommands::add(CLI::App& storage) {
    login_ = storage.add_subcommand("login", "Log in to a server and make it the storage")->require_subcommand(1);
    hosts_ = storage.add_subcommand("hosts", "List the saved servers")->require_subcommand(1);
    forget_ = storage.add_subcommand("forget", "Forget a saved server")->require_subcommand(1);
    logout_ =
        storage.add_subcommand("logout", "End the connection and go back to local storage")->require_subcommand(1);
    for (const ServerEngine& engine : serverEngines()) {
        CLI::App* login = login_->add_subcommand(engine.name, "Prove the server, save it and make it current");
        login->add_option("host", host_, engine.takesPortAndMode ? "The server's address" : "The share's URL")
            ->required();
        if (engine.takesPortAndMode) {
            login->add_option("--port", port_, "The server's port (21)");
            login->add_flag("--active", active_, "Active mode: the server opens the data connections");
        }
        login->add_option("--user", user_, "The login");
        login->add_option(
            "--root", root_,
            std::string("The program's folder on the server (") + engine.settings->defaultRootDirectory + ")");
        login->add_option("--password-file", passwordFile_, "A file whose first line is the password");
        hosts_->add_subcommand(engine.name, "The saved servers")->add_flag("--json", asJson_, "In JSON");
        forget_->add_subcommand(engine.name, "A saved server")
            ->add_option("host", host_, "The server's address")
            ->required();
        logout_->add_subcommand(engine.name, "The server in use");
    }
}

bool ServerStorageCommands::parsed() const {
    for (const CLI::App* group : {login_, hosts_, forget_, logout_}) {
        if (group->parsed() && engineOf(group)) return true;
    }
    return false;
}

const ServerEngine* ServerStorageCommands::engineOf(const CLI::App* group) const {
    for (const ServerEngine& engine : serverEngines()) {
        if (group->get_subcommand(engine.name)->parsed()) return &engine;
    }
    return nullptr;
}

int ServerStorageCommands::run(std::ostream& out, std::ostream& errors) {
    if (const ServerEngine* engine = engineOf(login_)) return logIn(*engine, out, errors);
    if (const ServerEngine* engine = engineOf(hosts_)) return listHosts(*engine, out);
    if (const ServerEngine* engine = engineOf(forget_)) return forget(*engine, out, errors);
    return logOut(*engineOf(logout_), out);
}

int ServerStorageCommands::logIn(const ServerEngine& engine, std::ostream& out, std::ostream& errors) {
    const auto secret = readPassword(passwordFile_, fmt::format("Password for {}@{}: ", user_, host_), errors);
    if (!secret) return 1;
    const std::string port = port_.empty() && engine.takesPortAndMode ? "21" : port_;
    const ServerCredentials host{host_, port, user_, *secret, root_, !active_};
    if (const auto error = ServerLogin::logIn(engine.type, *engine.settings, host)) {
        fmt::print(errors, "stowhaven: {}\n", *error);
        fmt::print(errors, "Storage stays {}.\n", Supervisor::shared().storageEngineName());
        return 1;
    }
    const ServerCredentials current = ServerCredentials::current(*engine.settings);
    fmt::print(out, "Logged in to {}: sessions go to {}.\nStorage is now {}.\n", current.host,
               StorageLayout::deviceDirectory(current.rootDirectory, Supervisor::shared().deviceName()),
               Supervisor::shared().storageEngineName());
    return 0;
}

int ServerStorageCommands::listHosts(const ServerEngine& engine, std::ostream& out) const {
    const auto hosts = ServerHosts::load(*engine.settings);
    if (asJson_) {
        nlohmann::json list = nlohmann::json::array();
        for (const ServerCredentials& host : hosts) {
            nlohmann::json entry = {{"host", host.host},
                                    {"login", host.login},
                                    {"password", kMaskedPassword},
                                    {"rootDir", host.rootDirectory},
                                    {"current", isCurrentHost(engine, host)}};
            if (engine.takesPortAndMode) {
                entry["port"] = host.port;
                entry["passive"] = host.passive;
            }
            list.push_back(std::move(entry));
        }
        out << list.dump(2) << '\n';
        return 0;
    }
    if (hosts.empty()) fmt::print(out, "No saved {} hosts.\n", engine.name);
    for (const ServerCredentials& host : hosts) fmt::print(out, "{}\n", hostLine(engine, host));
    return 0;
}

int ServerStorageCommands::forget(const ServerEngine& engine, std::ostream& out, std::ostream& errors) {
    if (!ServerLogin::forget(engine.type, *engine.settings, host_)) {
        fmt::print(errors, "stowhaven: no saved {} host <{}>\n", engine.name, host_);
        return 1;
    }
    fmt::print(out, "Forgot {}.\n", host_);
    return 0;
}

int ServerStorageCommands::logOut(const ServerEngine& engine, std::ostream& out) {
    ServerLogin::logOut(engine.type);
    fmt::print(out, "Storage is now {}.\n", Supervisor::shared().storageEngineName());
    return 0;
}

}  // namespace stowhaven
