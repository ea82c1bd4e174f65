#pragma once

#include "platform/Date.h"

#include <memory>
#include <optional>
#include <string>

namespace stowhaven {

class StorageHelperProtocol;

// Fetches a file of a session from the engine into the temporary folder and answers its
// local path, or nothing when the engine couldn't. Engines block until they are done and
// report through the hooks of the request; ANSWERED, when given, tells whether either hook
// ran at all.
std::optional<std::string> fetchSessionFile(StorageHelperProtocol& engine, const std::string& name, Date date,
                                            const std::optional<std::string>& subDirectory, bool* answered = nullptr);

}  // namespace stowhaven
