#include "cli/FtpHostChoice.h"

#include "cli/TerminalPrompt.h"
#include "storage/ftp/FTPHosts.h"
#include "storage/ftp/FTPLogin.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <string>
#include <vector>

namespace stowhaven {

namespace {

std::optional<std::string> askFor(TerminalPrompt& prompt, const std::string& title, Alert::Field field) {
    const auto result = prompt.ask(Alert{0, title, "", {"OK"}, field});
    if (result.kind != TerminalPrompt::Result::Kind::Answered) return std::nullopt;
    return result.answer.fieldText.value_or("");
}

std::optional<FTPCredentials> askForNewHost(TerminalPrompt& prompt) {
    FTPCredentials host;
    for (auto [title, value, field] :
         {std::tuple{"Host", &host.host, Alert::Field::Text}, std::tuple{"Port (21)", &host.port, Alert::Field::Text},
          std::tuple{"Login", &host.login, Alert::Field::Text},
          std::tuple{"Password", &host.password, Alert::Field::Secure},
          std::tuple{"Folder (/Stowhaven)", &host.rootDirectory, Alert::Field::Text}}) {
        auto answer = askFor(prompt, title, field);
        if (!answer) return std::nullopt;
        *value = std::move(*answer);
    }
    const auto mode = prompt.choose("Data connections", {"Passive (the usual)", "Active"});
    if (!mode) return std::nullopt;
    host.passive = *mode == 0;
    return host;
}

}  // namespace

bool chooseFtpHost(TerminalPrompt& prompt, std::ostream& out) {
    const std::vector<FTPCredentials> saved = FTPHosts::load();
    std::vector<std::string> options;
    for (const FTPCredentials& host : saved) {
        options.push_back(fmt::format("{}@{}:{} {}", host.login, host.host, host.port, host.rootDirectory));
    }
    options.emplace_back("A new host");
    const auto chosen = prompt.choose("FTP server", options);
    if (!chosen) return false;
    const auto host = *chosen < saved.size() ? std::optional(saved[*chosen]) : askForNewHost(prompt);
    if (!host) return false;
    fmt::print(out, "Connecting to {}...\n", host->host);
    if (const auto error = FTPLogin::logIn(*host)) {
        fmt::print(out, "{}\n", *error);
        return false;
    }
    return true;
}

}  // namespace stowhaven
