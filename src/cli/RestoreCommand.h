#pragma once

#include "cli/JobRequest.h"

#include <optional>
#include <ostream>
#include <string>

namespace stowhaven {

// "stowhaven restore": restores the current session (or the one of a stamp) with its
// default selection from the current storage engine through the main flow, its questions
// asked on the terminal or answered by the options, with progress on standard error, and
// ends with the restore log. Exits 0 when every selected package installed or was
// installed already, 1 otherwise or when no restore could start, 2 for a usage error or an
// unanswered question, 130 when canceled.
class RestoreCommand {
public:
    struct Request {
        JobRequest job;
        // "yyyy-MM-dd_HH~mm~ss", as the history lists it.
        std::optional<std::string> session;
        // The package whose install log is shown after the restore log.
        std::optional<std::string> logOf;
    };

    static int run(const Request& request, std::ostream& out, std::ostream& errors);
};

}  // namespace stowhaven
