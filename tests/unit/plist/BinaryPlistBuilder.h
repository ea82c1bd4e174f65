#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace stowhaven::test {

inline std::string bigEndian(std::uint64_t value, std::size_t width) {
    std::string bytes;
    for (std::size_t i = width; i-- > 0;) bytes += static_cast<char>(value >> (8 * i) & 0xFF);
    return bytes;
}

// A binary property list made of the given encoded objects, the first being the top one,
// for input that no writer would produce. References inside objects are `referenceSize`
// bytes wide; offsets are four bytes wide.
inline std::string binaryPlist(const std::vector<std::string>& objects, std::size_t referenceSize = 1) {
    std::string bytes = "bplist00";
    std::vector<std::uint64_t> offsets;
    for (const auto& object : objects) {
        offsets.push_back(bytes.size());
        bytes += object;
    }
    const std::uint64_t offsetTable = bytes.size();
    for (const auto offset : offsets) bytes += bigEndian(offset, 4);
    bytes += std::string(6, '\0');
    bytes += static_cast<char>(4);
    bytes += static_cast<char>(referenceSize);
    bytes += bigEndian(objects.size(), 8) + bigEndian(0, 8) + bigEndian(offsetTable, 8);
    return bytes;
}

}  // namespace stowhaven::test
