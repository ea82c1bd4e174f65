#pragma once

#include "flows/MainScreen.h"
#include "platform/DateFormatter.h"

namespace stowhaven {

// The dates that the main screen shows, and that an untitled backup is described by.
extern const DateFormatter gDisplayDateFormatter;

// What the main screen's labels read in a direction: in backup mode the current session's
// title, description and date, with the estimated size of the selection; in restore mode
// the last restore's, with the size of what the session would bring back.
MainScreen::Labels composeMainLabels(bool backupMode);

}  // namespace stowhaven
