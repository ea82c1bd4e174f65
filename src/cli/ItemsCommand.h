#pragma once

#include <ostream>

namespace stowhaven {

// "stowhaven items": what a backup could hold on this device, whatever the scan settings
// say: the applications with their sizes and selection, the preference and SpringBoard
// files, the package manager's sources, and every archivable folder that exists with its
// contents; as text or as JSON. Nothing on the device changes.
class ItemsCommand {
public:
    static int run(bool asJson, std::ostream& out, std::ostream& errors);
};

}  // namespace stowhaven
