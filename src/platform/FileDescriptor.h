#pragma once

#include <unistd.h>

#include <utility>

namespace stowhaven {

// An open file descriptor, closed when the object goes; -1 stands for none. Closing also
// lets go of any flock taken through it.
class FileDescriptor {
public:
    explicit FileDescriptor(int descriptor = -1) : descriptor_(descriptor) {}
    ~FileDescriptor() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }

    int get() const { return descriptor_; }
    bool isOpen() const { return descriptor_ >= 0; }

private:
    int descriptor_ = -1;
};

}  // namespace stowhaven
