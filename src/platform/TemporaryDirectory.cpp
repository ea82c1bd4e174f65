#include "platform/TemporaryDirectory.h"

#include "platform/DeviceRoot.h"
#include "platform/Log.h"

#include <sys/stat.h>

#include <filesystem>

namespace stowhaven {

std::string TemporaryDirectory::path() {
    const std::string folder = DeviceRoot::var() + "/tmp/stowhaven";
    std::error_code error;
    if (std::filesystem::create_directories(folder, error)) {
        chmod(folder.c_str(), 0700);
    } else if (error) {
        SH_LOG("Couldn't create <{}>: {}", folder, error.message());
    }
    return folder;
}

}  // namespace stowhaven
