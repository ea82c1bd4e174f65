#include "support/FolderSnapshot.h"

#include "platform/FileManager.h"

#include <fmt/format.h>

#include <filesystem>

namespace stowhaven::test {

namespace fs = std::filesystem;

std::map<std::string, std::string> snapshot(const std::string& folder) {
    std::map<std::string, std::string> items;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const auto mode = fmt::format("{:04o}", static_cast<unsigned>(entry.symlink_status().permissions()));
        const std::string path = fs::relative(entry.path(), folder).string();
        items[path] = entry.is_directory() ? "folder " + mode
                                           : mode + " " + FileManager::contentsOfFile(entry.path()).value_or("");
    }
    return items;
}

}  // namespace stowhaven::test
