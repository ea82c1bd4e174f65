#pragma once

#include "core/BackupSession.h"

#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace stowhaven {

class StorageHelperProtocol;

// The history files of this device on the current storage, had through the engine's own
// listing and retrieval, whatever the engine.
class HistoryFiles {
public:
    // The names of the history files, oldest first (stamps sort as text in date order), as
    // an engine just started lists them: damaged ones included.
    static std::vector<std::string> listed(StorageHelperProtocol& engine);

    // Fetches the history files NAMES into the temporary folder; answers the local path of
    // each one the engine could fetch.
    static std::map<std::string, std::string> fetch(StorageHelperProtocol& engine,
                                                    const std::vector<std::string>& names);

    // The session of a fetched history file, or why it is none; the file is removed.
    using Decoded = std::variant<std::shared_ptr<BackupSession>, std::string>;
    static Decoded decode(const std::string& path, const std::string& name);
};

}  // namespace stowhaven
