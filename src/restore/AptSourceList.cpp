#include "restore/AptSourceList.h"

#include "core/Text.h"

#include <algorithm>

namespace stowhaven {

bool AptSourceList::holds(std::string_view list, std::string_view line) {
    const std::string wanted = textutil::trimmed(line);
    const auto lines = textutil::split(list, '\n');
    return std::any_of(lines.begin(), lines.end(),
                       [&](const std::string& present) { return textutil::trimmed(present) == wanted; });
}

std::string AptSourceList::withLine(std::string list, std::string_view line) {
    if (!list.empty() && !list.ends_with('\n')) list += '\n';
    list.append(line);
    list += '\n';
    return list;
}

}  // namespace stowhaven
