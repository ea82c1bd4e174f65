#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace stowhaven {

// The plain zlib stream (RFC 1950) of the history text and the address-book note, and the
// gzip stream (RFC 1952) of the address book's old note.
class Zlib {
public:
    static std::string deflate(std::string_view bytes);

    // Nothing, with a log line, for a damaged or truncated stream, bytes after its end,
    // or more than `maximumSize` bytes inflated.
    static std::optional<std::string> inflate(std::string_view stream, std::size_t maximumSize);
    // The same for one gzip member, its header and checksum checked.
    static std::optional<std::string> gunzip(std::string_view stream, std::size_t maximumSize);
};

}  // namespace stowhaven
