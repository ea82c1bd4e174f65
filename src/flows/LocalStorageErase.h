#pragma once

namespace stowhaven {

// Erases every backup in local storage: each history file and session folder of the
// storage folder goes. The folder itself and anything else in it stay, since the setting
// may name a folder the user keeps other files in.
void eraseLocalSessions();

}  // namespace stowhaven
