#pragma once

namespace stowhaven {

class BackupSession;

// Chooses what of a session's applications and tweak places a restore takes when no one
// picks by hand: the saved restore defaults where there are some, and where there are
// none, as for every saved choice, everything the device can take (the applications it
// has installed, every place with all its items).
void selectRestoreDefaults(BackupSession& session);

}  // namespace stowhaven
