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

// Makes the engine current and keeps it so; false when it can't work here (no access to the
// contacts, a server without a login), having said why, the engine before staying current.
bool useStorageEngine(StorageType type);

// Makes the engine current, after its login when it has none: a server chosen among the
// saved ones or asked for, the service's page in a browser, or the account's own name and
// password. False, having said why, when the login failed or was given up, the storage
// before staying current.
bool takeEngine(StorageType type, TerminalPrompt& prompt, std::ostream& out);

// Offers the engines on the prompt; true when the user took one that is now current.
bool chooseStorageEngine(TerminalPrompt& prompt, std::ostream& out);

}  // namespace stowhaven
