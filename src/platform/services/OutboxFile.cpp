#include "platform/services/OutboxFile.h"

#include "platform/Log.h"

#include <fcntl.h>
#include <fmt/chrono.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace stowhaven {

std::string OutboxFile::utcStamp(std::chrono::system_clock::time_point when) {
    return fmt::format("{:%Y%m%dT%H%M%SZ}", fmt::gmtime(std::chrono::system_clock::to_time_t(when)));
}

std::optional<std::string> OutboxFile::write(const std::string& folder, std::chrono::system_clock::time_point when,
                                             const std::string& extension, const std::string& text) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) {
        SH_LOG("Couldn't create <{}>: {}", folder, error.message());
        return std::nullopt;
    }
    const std::string stamp = utcStamp(when);
    for (int attempt = 0; attempt < 1000; ++attempt) {
        const std::string name = attempt == 0 ? stamp : fmt::format("{}-{}", stamp, attempt);
        const std::string path = folder + "/" + name + "." + extension;
        const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (descriptor < 0 && errno == EEXIST) continue;
        if (descriptor < 0) break;
        const bool written = ::write(descriptor, text.data(), text.size()) == static_cast<ssize_t>(text.size());
        close(descriptor);
        if (written) return path;
        break;
    }
    SH_LOG("Couldn't write into <{}>: {}", folder, std::strerror(errno));
    return std::nullopt;
}

}  // namespace stowhaven
