#include "storage/RemoteFolders.h"

#include "platform/FileManager.h"
#include "storage/TransferFollowing.h"

#include <filesystem>

namespace stowhaven {

// Up to the nearest folder that is there, then down, making each: the folders above a share
// (WebDAV's "/owncloud/remote.php") can be neither listed nor made.
bool RemoteFolders::createDirectoryWithParents(const std::string& path) {
    if (listDirectory(path)) return true;
    const std::string parent = std::filesystem::path(path).parent_path().string();
    if (parent.size() > 1 && parent != path && !createDirectoryWithParents(parent)) return false;
    return createDirectory(path);
}

std::optional<std::int64_t> RemoteFolders::sizeOfFileToSend(const std::string& localPath) {
    if (FileManager::isRegularFile(localPath)) return static_cast<std::int64_t>(FileManager::sizeOfItem(localPath));
    setErrorMessage(localPath + " is no file to send");
    return std::nullopt;
}

bool RemoteFolders::followTransfer(Transfer& transfer, TransferDisplay::Direction direction, std::int64_t size) {
    std::string error;
    if (stowhaven::followTransfer(transfer, direction, size, error)) return true;
    setErrorMessage(error);
    return false;
}

}  // namespace stowhaven
