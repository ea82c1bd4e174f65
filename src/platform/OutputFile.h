#pragma once

#include "platform/FileDescriptor.h"

#include <cstddef>
#include <optional>
#include <string>

namespace stowhaven {

// A file written piece by piece, from the start. A link at its name is not followed: such
// a file can't be created.
class OutputFile {
public:
    // An empty file at PATH, replacing a plain file there; nothing, with the reason in error.
    static std::optional<OutputFile> create(const std::string& path, std::string& error);

    // Appends the bytes; false, with the reason in error, when not all of them were written.
    bool write(const char* bytes, std::size_t count, std::string& error);

private:
    explicit OutputFile(FileDescriptor descriptor) : descriptor_(std::move(descriptor)) {}

    FileDescriptor descriptor_;
};

}  // namespace stowhaven
