#pragma once

#include <CLI/CLI.hpp>

#include <optional>
#include <ostream>
#include <string>

namespace stowhaven {

// "stowhaven settings": lists the program's settings, prints one, sets one or removes one.
// Passwords, tokens and the encryption key show masked unless the secrets are asked for. A
// list is typed and printed as a JSON array of strings, so what --json prints sets it again.
class SettingsCommand {
public:
    struct Request {
        std::optional<std::string> key;
        std::optional<std::string> value;
        bool asJson = false;
        bool showSecrets = false;
        bool unset = false;
    };

    void add(CLI::App& app);
    bool parsed() const { return command_->parsed(); }
    // Answers the exit status: 2, with nothing written, for a key that is no setting of the
    // program, a value that is not of the key's kind or --unset without a key or with a value;
    // 1 for a key that is not set or settings that can't be written.
    int run(std::ostream& out, std::ostream& errors) const { return run(request_, out, errors); }
    static int run(const Request& request, std::ostream& out, std::ostream& errors);

private:
    CLI::App* command_ = nullptr;
    Request request_;
};

}  // namespace stowhaven
