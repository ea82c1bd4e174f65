#pragma once

#include <string>
#include <vector>

namespace stowhaven {

// The packages the last backup rebuilt from the device, as lines for the backup's report:
// a package repacked without some of its files, or refused, is never left out in silence.
class PackageRepackReport {
public:
    static void add(std::string line);
    // The lines since the last take, which empties the report.
    static std::vector<std::string> take();
};

}  // namespace stowhaven
