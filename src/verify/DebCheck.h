#pragma once

#include <optional>
#include <string>

namespace stowhaven {

// Whether a fetched .deb is a package archive the device's dpkg can install: nothing when it
// is, or the fault. The file is removed in either case.
std::optional<std::string> faultOfDeb(const std::string& deb);

}  // namespace stowhaven
