#pragma once

#include "cli/JobRequest.h"

#include <ostream>

namespace stowhaven {

class TerminalFlow;

// "stowhaven backup": a backup of the current selection (the saved defaults) on the current
// storage engine through the main flow, its questions asked on the terminal or answered by
// the options, its progress on standard error. Exits 0 when the backup succeeded, 1 when it
// failed or could not start, 2 for a usage error or an unanswered question, 130 when
// canceled.
class BackupCommand {
public:
    static int run(const JobRequest& request, std::ostream& out, std::ostream& errors);
    // The status of the backup the flow ran last, or of its absence.
    static int outcome(TerminalFlow& flow, std::size_t alertsBefore, std::ostream& out, std::ostream& errors);
};

}  // namespace stowhaven
