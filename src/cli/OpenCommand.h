#pragma once

#include "core/StowhavenAppDelegate.h"

#include <ostream>
#include <string>

namespace stowhaven {

// "stowhaven open": hands the program a URL or a file, as another application hands them
// to it on the device: "stowhaven://autobackup", or a file to import.
class OpenCommand {
public:
    // Answers the exit status: 2 for a URL the program doesn't take or a path that is no file.
    static int run(StowhavenAppDelegate& delegate, const std::string& target, std::ostream& out, std::ostream& errors);
};

}  // namespace stowhaven
