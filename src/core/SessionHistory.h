#pragma once

#include "archive/ArchiveValue.h"
#include "core/BackupSession.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

// Sessions out of the texts that hold them: a history file of one session, or the note of
// an address-book record with the whole history of a device, in either of its formats.
class SessionHistory {
public:
    using Sessions = std::vector<std::shared_ptr<BackupSession>>;

    // The session, or the sessions of an array; anything else holds none.
    static Sessions sessionsOf(const ArchiveValue& root);
    // An old note gives one new session; a current one, deciphered first where it is
    // enciphered, the sessions of noteSessionsOf().
    static Sessions fromNote(const std::string& note);
    // The sessions of a note's history, those written before sessions had a version
    // taking the running one and keeping their SpringBoard data whole.
    static Sessions noteSessionsOf(const ArchiveValue& root);
};

}  // namespace stowhaven
