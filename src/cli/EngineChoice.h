#pragma once

#include "storage/StorageType.h"

#include <optional>
#include <ostream>
#include <string>

namespace stowhaven {

class TerminalPrompt;

// The engines by their short names on the command line: "local", "ftp", "dropbox"...
std::optional<StorageType> storageTypeNamed(const std::string& name);
// "addressbook, dropbox, ...", for a message.
std::string storageEngineNames();

// Makes the engine current and keeps it so; false, with the engine before kept, when this
// build has no such engine.
bool useStorageEngine(StorageType type);

// Offers the engines on the prompt; true when the user took one that is now current.
bool chooseStorageEngine(TerminalPrompt& prompt, std::ostream& out);

}  // namespace stowhaven
