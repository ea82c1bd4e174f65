#include "platform/MemoryStatistics.h"

#include "platform/FileManager.h"

#include <algorithm>
#include <charconv>

namespace stowhaven {

namespace {

// The kilobytes of a line such as "MemFree:         123456 kB".
std::optional<std::uint64_t> kilobytesOf(std::string_view text, std::string_view label) {
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        std::string_view line = text.substr(start, end - start);
        start = end + 1;
        if (!line.starts_with(label) || line.size() == label.size() || line[label.size()] != ':') continue;
        line.remove_prefix(label.size() + 1);
        const auto digits = line.find_first_not_of(' ');
        if (digits == std::string_view::npos) return std::nullopt;
        std::uint64_t kilobytes = 0;
        const auto parsed = std::from_chars(line.data() + digits, line.data() + line.size(), kilobytes);
        if (parsed.ec != std::errc()) return std::nullopt;
        return kilobytes;
    }
    return std::nullopt;
}

}  // namespace

std::optional<MemoryStatistics> MemoryStatistics::fromMeminfo(std::string_view text) {
    const auto total = kilobytesOf(text, "MemTotal");
    const auto free = kilobytesOf(text, "MemFree");
    if (!total || !free || *free > *total) return std::nullopt;
    return MemoryStatistics{*total * 1024, (*total - *free) * 1024, *free * 1024};
}

std::optional<MemoryStatistics> MemoryStatistics::read() {
    const auto text = FileManager::contentsOfFile("/proc/meminfo");
    return text ? fromMeminfo(*text) : std::nullopt;
}

}  // namespace stowhaven
