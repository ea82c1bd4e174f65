#pragma once

#include "cli/PresetAnswers.h"
#include "core/StowhavenAppDelegate.h"

#include <ostream>
#include <string>

namespace stowhaven {

// "stowhaven open": hands the program a URL or a file, as another application hands them
// to it on the device. "stowhaven://autobackup" runs the automatic backup once the data is
// loaded; a file is offered for import, and on a terminal the session goes on with it.
class OpenCommand {
public:
    // Answers the exit status: that of the automatic backup, 0 once an import was answered,
    // 2 for a URL the program doesn't take, a path that is no file or an unanswered question.
    static int run(StowhavenAppDelegate& delegate, const std::string& target, const PresetAnswers& presets,
                   std::ostream& out, std::ostream& errors);
};

}  // namespace stowhaven
