#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace stowhaven {

// Where the host services leave what a device would hand to another application (a
// calendar entry, a mail): one file per item in a folder of the user's.
class OutboxFile {
public:
    // Writes TEXT as "<folder>/<UTC stamp>[-n].<extension>", never over an existing file;
    // answers the path, or nothing after logging the error.
    static std::optional<std::string> write(const std::string& folder, std::chrono::system_clock::time_point when,
                                            const std::string& extension, const std::string& text);

    // "20261122T101500Z"
    static std::string utcStamp(std::chrono::system_clock::time_point when);
};

}  // namespace stowhaven
