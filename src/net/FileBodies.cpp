#include "net/FileBodies.h"

#include <curl/curl.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace stowhaven::FileBodies {

FileDescriptor openToSend(const std::string& path, std::int64_t& size, std::string& error) {
    FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status {};
    if (file.isOpen() && ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode)) {
        size = status.st_size;
        return file;
    }
    error = "can't read " + path + ": " + (file.isOpen() ? "not a file" : std::strerror(errno));
    return FileDescriptor();
}

FileDescriptor openToReceive(const std::string& path, std::string& error) {
    FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file.isOpen()) error = "can't write " + path + ": " + std::strerror(errno);
    return file;
}

std::size_t readFromFile(char* buffer, std::size_t size, std::size_t count, void* file) {
    for (;;) {
        const ssize_t done = ::read(static_cast<FileDescriptor*>(file)->get(), buffer, size * count);
        if (done >= 0) return static_cast<std::size_t>(done);
        if (errno != EINTR) return CURL_READFUNC_ABORT;
    }
}

std::size_t writeToFile(char* data, std::size_t size, std::size_t count, void* file) {
    std::size_t written = 0;
    while (written < size * count) {
        const ssize_t done = ::write(static_cast<FileDescriptor*>(file)->get(), data + written, size * count - written);
        if (done < 0 && errno == EINTR) continue;
        if (done <= 0) break;
        written += static_cast<std::size_t>(done);
    }
    return written;
}

}  // namespace stowhaven::FileBodies
