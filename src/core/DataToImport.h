#pragma once

#include <optional>
#include <string>

namespace stowhaven {

// The URL of a file handed to the program for import, kept until the loading of data
// looks for it. Safe to use from any thread.
class DataToImport {
public:
    static std::optional<std::string> url();
    // std::nullopt drops the URL held.
    static void setURL(std::optional<std::string> url);
};

}  // namespace stowhaven
