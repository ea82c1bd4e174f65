#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

// One line of the package scan: what dpkg-query reports of an installed (or half
// removed) package, field by field, untrimmed.
struct ScanLine {
    std::string name;
    std::string identifier;
    std::string version;
    std::string maintainer;
    std::string section;
    std::string depends;
    std::string status;
};

// The scan of all packages of the device through one dpkg-query call, whose output goes
// to a file in the temporary folder.
class PackageScan {
public:
    // The command line, writing into OUTPUT.
    static std::string command(const std::string& output);

    // The raw lines, or nothing (with a log line) when the scan left no file.
    static std::optional<std::vector<std::string>> lines();
    // The non-empty lines of the scan's output.
    static std::vector<std::string> linesOf(std::string_view output);

    // Splits a line at its tabs; a line with fewer than seven fields gives nothing.
    static std::optional<ScanLine> parse(const std::string& line);
};

}  // namespace stowhaven
