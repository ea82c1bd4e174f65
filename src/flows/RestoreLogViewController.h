#pragma once

#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// How each package of the last restore went: a row per package of the restored list, with
// its mark and, on demand, the log of its install.
class RestoreLogViewController {
public:
    enum class Mark { Installed, AlreadyInstalled, Failed };

    struct Row {
        std::string name;
        std::string packageName;
        std::string version;
        Mark mark;
        std::string installLog;
    };

    // The packages of the current session that went through an install.
    static std::vector<Row> packageList();
    // "installed", "already installed", "failed".
    static const char* textOf(Mark mark);
};

}  // namespace stowhaven
