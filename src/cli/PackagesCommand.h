#pragma once

#include <ostream>

namespace stowhaven {

// "stowhaven packages": the packages that the device's scan reports, as a table or as JSON.
class PackagesCommand {
public:
    // Answers the exit status.
    static int run(bool asJson, std::ostream& out, std::ostream& errors);
};

}  // namespace stowhaven
