#pragma once

#include <ostream>
#include <string>

namespace stowhaven {

// "stowhaven inspect FILE": every session that a history file (.stowhvn), an address-book
// note (either format, enciphered or not) or a vCard with such a note holds, as text or
// as JSON keyed by the archive's own keys. A way to look into a backup without restoring
// it; nothing on the device changes.
class HistoryViewCommand {
public:
    // Answers the exit status: 1 for a file that holds no session the program can read.
    static int run(const std::string& file, bool asJson, std::ostream& out, std::ostream& errors);
};

}  // namespace stowhaven
