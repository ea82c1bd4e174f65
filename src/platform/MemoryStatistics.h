#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace stowhaven {

// The memory of the machine, as the device's host statistics count it: used and free pages
// make up the total.
struct MemoryStatistics {
    std::uint64_t totalBytes = 0;
    std::uint64_t usedBytes = 0;
    std::uint64_t freeBytes = 0;

    // Nothing when the statistics can't be read.
    static std::optional<MemoryStatistics> read();
    // From the text of /proc/meminfo; nothing without its "MemTotal" and "MemFree" lines.
    static std::optional<MemoryStatistics> fromMeminfo(std::string_view text);
};

}  // namespace stowhaven
