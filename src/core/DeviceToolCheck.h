#pragma once

#include <string>
#include <vector>

namespace stowhaven {

// The device tools that backups and restores run, looked up by the device's own shell the
// way it will look them up for the jobs: the names it can't find, in order. Nothing is
// said of a check that couldn't run (a full temporary folder): the jobs then say it.
std::vector<std::string> missingDeviceTools();

}  // namespace stowhaven
