#pragma once

#include "storage/StorageType.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <ostream>
#include <string>

namespace stowhaven {

// The cloud engines whose login goes through the service's page in a browser, from the
// command line:
//   storage login dropbox|box|gdrive|onedrive [--code VALUE]
//   storage logout dropbox|box|gdrive|onedrive
// Without --code the login prints the address to open, on any machine, and reads back what
// the service handed the user there (the code, or the whole address it went to); without a
// terminal to read it on, it ends with status 2 and says to run again with --code.
class OAuthStorageCommands {
public:
    // Adds the engines to the login and logout groups of "storage".
    void add(CLI::App& login, CLI::App& logout);
    bool parsed() const;
    // The exit status: 1 when the service refused, 2 when the answer can't be asked for.
    int run(std::ostream& out, std::ostream& errors);

private:
    struct Engine {
        const char* name;
        StorageType type;
        CLI::App* login = nullptr;
        CLI::App* logout = nullptr;
    };
    int logIn(const Engine& engine, std::ostream& out, std::ostream& errors);
    int logOut(const Engine& engine, std::ostream& out);

    Engine engines_[4] = {{"dropbox", StorageType::Dropbox},
                          {"box", StorageType::Box},
                          {"gdrive", StorageType::GDrive},
                          {"onedrive", StorageType::SkyDrive}};
    std::optional<std::string> code_;
};

}  // namespace stowhaven
