#include "storage/RemoteFolders.h"

#include "core/Supervisor.h"
#include "platform/FileManager.h"
#include "platform/Log.h"

#include <filesystem>

namespace stowhaven {

namespace {

// How often a running transfer is looked at: for its progress and for a cancel of the job.
constexpr std::chrono::milliseconds kTransferPoll{5};

}  // namespace

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
    TransferDisplay progress(direction, size);
    const Supervisor& supervisor = Supervisor::shared();
    bool aborted = false;
    while (!transfer.waitUntilFinished(kTransferPoll)) {
        progress.update(transfer.bytesDone(), transfer.bytesPerSecond());
        if (supervisor.isCanceled() && !aborted) {
            SH_LOG("Operation canceled!");
            transfer.abort();
            aborted = true;
        }
    }
    progress.update(transfer.bytesDone(), transfer.bytesPerSecond());
    if (transfer.succeeded()) return true;
    setErrorMessage(aborted ? std::string("Canceled") : transfer.error());
    SH_LOG("error: {}", errorMessage().value_or(""));
    return false;
}

}  // namespace stowhaven
