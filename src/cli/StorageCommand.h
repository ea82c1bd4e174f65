#pragma once

#include <optional>
#include <ostream>
#include <string>

namespace stowhaven {

// "stowhaven storage": the engine the device works with, its name and the room left on
// it; "stowhaven storage use NAME" makes another engine current and keeps it so.
class StorageCommand {
public:
    // ENGINE is the engine to use, by its short name ("local"), or none to show the
    // current one. Answers the exit status: 2 for an unknown or unavailable engine.
    static int run(const std::optional<std::string>& engine, std::ostream& out, std::ostream& errors);
};

}  // namespace stowhaven
