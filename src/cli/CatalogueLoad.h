#pragma once

namespace stowhaven {

// The engine of the current storage type started as the program's main screen starts it: one
// that can't start gives way to local storage, and the user is warned as the main screen
// warns.
void startStorageEngine();

// The load of the catalogue as the program's main screen does it at start: the engine is
// started as above, and the device and the storage's newest session are loaded on a
// background queue while the main queue goes on serving. Returns once the load has ended and
// the archivable folders are looked at.
void loadCatalogue();

}  // namespace stowhaven
