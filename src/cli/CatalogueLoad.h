#pragma once

namespace stowhaven {

// The load of the catalogue as the program's main screen does it at start: the engine of
// the current storage type is made, and the device and the storage's newest session are
// loaded on a background queue while the main queue goes on serving. Returns once the load
// has ended and the archivable folders are looked at; false when the engine of the current type isn't in this build.
bool loadCatalogue();

}  // namespace stowhaven
