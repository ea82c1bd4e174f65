#include "cli/SelectionLine.h"

#include <fmt/format.h>

namespace stowhaven {

std::string selectionLine(const SelectionRow& row) {
    std::string line = fmt::format("[{}] {}", row.isSelected() ? 'x' : ' ', row.title());
    if (const std::string key = row.key(); key != row.title()) line += fmt::format(" [{}]", key);
    if (row.size() >= 0) line += fmt::format(" {:.3f} Mb", row.size());
    return line;
}

}  // namespace stowhaven
