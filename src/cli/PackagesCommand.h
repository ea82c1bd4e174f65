#pragma once

#include <ostream>

namespace stowhaven {

// "stowhaven packages": the device's catalogue of packages, that is the installed packages
// the system handles, by section and by name, each with its firmware compatibility with
// the device's system; as a table or as JSON.
class PackagesCommand {
public:
    // Answers the exit status.
    static int run(bool asJson, std::ostream& out, std::ostream& errors);
};

}  // namespace stowhaven
