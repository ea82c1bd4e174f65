#include "platform/OutputFile.h"

#include <fcntl.h>

#include <cerrno>
#include <cstring>

namespace stowhaven {

std::optional<OutputFile> OutputFile::create(const std::string& path, std::string& error) {
    FileDescriptor descriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0644));
    if (!descriptor.isOpen()) {
        error = std::strerror(errno);
        return std::nullopt;
    }
    return OutputFile(std::move(descriptor));
}

bool OutputFile::write(const char* bytes, std::size_t count, std::string& error) {
    while (count > 0) {
        const ssize_t written = ::write(descriptor_.get(), bytes, count);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) {
            error = std::strerror(errno);
            return false;
        }
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
    return true;
}

}  // namespace stowhaven
