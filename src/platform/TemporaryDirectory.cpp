#include "platform/TemporaryDirectory.h"

#include "platform/DeviceRoot.h"
#include "platform/PrivateFolder.h"

#include <mutex>

namespace stowhaven {

namespace {

constexpr const char* kFolderName = "stowhaven";

std::string deviceTemporaryFolder() { return DeviceRoot::var() + "/tmp"; }

}  // namespace

std::string TemporaryDirectory::path() {
    const std::string folder = deviceTemporaryFolder() + "/" + kFolderName;
    if (!PrivateFolder::isPrivate(folder)) prepare();
    return folder;
}

bool TemporaryDirectory::prepare() {
    // Threads that find the folder missing at once make it once, and move nothing aside
    // that another of them has just made.
    static std::mutex mutex;
    std::lock_guard lock(mutex);
    return PrivateFolder::make(deviceTemporaryFolder(), {kFolderName});
}

}  // namespace stowhaven
