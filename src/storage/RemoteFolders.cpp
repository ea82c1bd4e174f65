#include "storage/RemoteFolders.h"

#include <filesystem>

namespace stowhaven {

bool RemoteFolders::createDirectoryWithParents(const std::string& path) {
    std::string made;
    for (const auto& component : std::filesystem::path(path).relative_path()) {
        made += "/" + component.string();
        // A folder that is there already refuses to be made; its listing tells.
        if (!createDirectory(made) && !listDirectory(made)) return false;
    }
    setErrorMessage(std::nullopt);
    return true;
}

}  // namespace stowhaven
