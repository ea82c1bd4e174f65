#pragma once

#include <string>

namespace stowhaven {

class CydiaFile;

// The name a session keeps a package's .deb under, in its "DEBS" folder, and a restore from
// .deb files fetches it by: "name_1%3a2.0_iphoneos-arm.deb" for "Name" "1:2.0".
std::string sessionDebName(const std::string& packageName, const std::string& version);
std::string sessionDebName(const CydiaFile& package);

}  // namespace stowhaven
