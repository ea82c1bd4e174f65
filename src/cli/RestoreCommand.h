#pragma once

#include <optional>
#include <ostream>
#include <string>

namespace stowhaven {

// "stowhaven restore --yes": restores the current session (or the one of a stamp) with its
// default selection from the current storage engine, with progress on standard error, and
// ends with the restore log: a line per package and its mark. Exits 0 when every selected
// package installed or was installed already, 1 otherwise, 2 for a usage error.
class RestoreCommand {
public:
    struct Request {
        bool confirmed = false;
        // "yyyy-MM-dd_HH~mm~ss", as the history lists it.
        std::optional<std::string> session;
        // A file whose first line is the key of an encrypted session.
        std::optional<std::string> keyFile;
        // The package whose install log is shown after the restore log.
        std::optional<std::string> logOf;
    };

    static int run(const Request& request, std::ostream& out, std::ostream& errors);
};

}  // namespace stowhaven
