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

enum class EngineUse {
    Current,
    // This build has no such engine.
    NotBuilt,
    // The engine can't work here (no access to the contacts, say); it said why.
    Refused,
};

// Makes the engine current and keeps it so; the engine before stays current when the
// answer is not Current.
EngineUse useStorageEngine(StorageType type);

// Makes a cloud engine whose login goes through its service's page current, linking it to an
// account first when it has no link; false, having said why, when it isn't one of those or
// the login failed, the storage before staying current.
bool takeCloudEngine(StorageType type, TerminalPrompt& prompt, std::ostream& out);

// Offers the engines on the prompt; true when the user took one that is now current.
bool chooseStorageEngine(TerminalPrompt& prompt, std::ostream& out);

}  // namespace stowhaven
