#pragma once

#include <optional>
#include <ostream>
#include <string>

namespace stowhaven {

// "stowhaven backup --yes": a whole backup of the current selection (the saved defaults) on
// the current storage engine, with its progress on standard error. Exits 0 when the backup
// succeeded, 1 when it failed (with the reason), 2 for a usage error.
class BackupCommand {
public:
    struct Request {
        bool confirmed = false;
        std::optional<std::string> title;
        std::optional<std::string> description;
        // A file whose first line is the key of an encrypted backup.
        std::optional<std::string> keyFile;
    };

    static int run(const Request& request, std::ostream& out, std::ostream& errors);
};

}  // namespace stowhaven
