#include "platform/Shell.h"

#include <fmt/format.h>

namespace stowhaven {

std::string Shell::wrap(const std::string& command) {
    return fmt::format("export PATH=/usr/bin:$PATH; ({}) > /dev/null 2>&1; echo Done", command);
}

}  // namespace stowhaven
