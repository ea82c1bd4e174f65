#include "cli/ServerHostChoice.h"

#include "cli/TerminalPrompt.h"
#include "storage/ServerHosts.h"
#include "storage/ServerLogin.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <string>
#include <tuple>
#include <vector>

namespace stowhaven {

namespace {

std::optional<std::string> askFor(TerminalPrompt& prompt, const std::string& title, Alert::Field field) {
    const auto result = prompt.ask(Alert{0, title, "", {"OK"}, field});
    if (result.kind != TerminalPrompt::Result::Kind::Answered) return std::nullopt;
    return result.answer.fieldText.value_or("");
}

std::optional<ServerCredentials> askForNewHost(const ServerEngine& engine, TerminalPrompt& prompt) {
    ServerCredentials host;
    std::vector<std::tuple<std::string, std::string*, Alert::Field>> fields = {
        {engine.takesPortAndMode ? "Host" : "URL (https://host:port)", &host.host, Alert::Field::Text}};
    if (engine.takesPortAndMode) fields.emplace_back("Port (21)", &host.port, Alert::Field::Text);
    fields.emplace_back("Login", &host.login, Alert::Field::Text);
    fields.emplace_back("Password", &host.password, Alert::Field::Secure);
    fields.emplace_back(fmt::format("Folder ({})", engine.settings->defaultRootDirectory), &host.rootDirectory,
                        Alert::Field::Text);
    for (const auto& [title, value, field] : fields) {
        auto answer = askFor(prompt, title, field);
        if (!answer) return std::nullopt;
        *value = std::move(*answer);
    }
    if (engine.takesPortAndMode) {
        if (host.port.empty()) host.port = "21";
        const auto mode = prompt.choose("Data connections", {"Passive (the usual)", "Active"});
        if (!mode) return std::nullopt;
        host.passive = *mode == 0;
    }
    return host;
}

}  // namespace

bool chooseServerHost(const ServerEngine& engine, TerminalPrompt& prompt, std::ostream& out) {
    const std::vector<ServerCredentials> saved = ServerHosts::load(*engine.settings);
    std::vector<std::string> options;
    for (const ServerCredentials& host : saved) {
        options.push_back(fmt::format("{}@{} {}", host.login, host.host, host.rootDirectory));
    }
    options.emplace_back("A new host");
    const auto chosen = prompt.choose("Server", options);
    if (!chosen) return false;
    const auto host = *chosen < saved.size() ? std::optional(saved[*chosen]) : askForNewHost(engine, prompt);
    if (!host) return false;
    fmt::print(out, "Connecting to {}...\n", host->host);
    if (const auto error = ServerLogin::logIn(engine.type, *engine.settings, *host)) {
        fmt::print(out, "{}\n", *error);
        return false;
    }
    return true;
}

}  // namespace stowhaven
