#pragma once

#include "flows/MainScreen.h"

#include <vector>

namespace stowhaven {

// The selection screens that have something to offer in a direction, in the order they
// are shown: applications and media, packages, files, other folders. None when the scans
// are off or, for a restore, the session holds nothing of theirs.
std::vector<FlowScreen> selectionScreens(bool backupMode);

}  // namespace stowhaven
