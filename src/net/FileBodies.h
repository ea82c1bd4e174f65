#pragma once

#include "platform/FileDescriptor.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace stowhaven {

// Local files streamed as the body of a transfer, and libcurl's callbacks that move their
// bytes; the callbacks' last argument is the FileDescriptor.
namespace FileBodies {

// The regular file at PATH opened to be sent, with its SIZE; not open, with ERROR, when it
// can't be read.
FileDescriptor openToSend(const std::string& path, std::int64_t& size, std::string& error);
// PATH made afresh to receive (never through a symbolic link there); not open, with ERROR,
// when it can't be written.
FileDescriptor openToReceive(const std::string& path, std::string& error);

std::size_t readFromFile(char* buffer, std::size_t size, std::size_t count, void* file);
std::size_t writeToFile(char* data, std::size_t size, std::size_t count, void* file);

}  // namespace FileBodies

}  // namespace stowhaven
