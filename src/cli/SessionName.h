#pragma once

#include "core/BackupSession.h"
#include "storage/StorageLayout.h"

#include <string>

namespace stowhaven {

// A session is named on the command line by its stamp, as the storage names its files, or
// by its date as the history lists it.
inline bool isNameOf(const std::string& name, const BackupSession& session) {
    const auto& date = session.sessionDate();
    return date && (StorageLayout::stamp(*date) == name || date->iso8601() == name);
}

}  // namespace stowhaven
