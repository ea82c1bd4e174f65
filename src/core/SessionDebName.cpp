#include "core/SessionDebName.h"

#include "core/CydiaFile.h"
#include "core/Text.h"

#include <fmt/format.h>

namespace stowhaven {

std::string sessionDebName(const std::string& packageName, const std::string& version) {
    return fmt::format("{}_{}_iphoneos-arm.deb", textutil::lowered(packageName),
                       textutil::lowered(textutil::percentEncoded(version)));
}

std::string sessionDebName(const CydiaFile& package) {
    return sessionDebName(textutil::orNull(package.packageName()), textutil::orNull(package.version()));
}

}  // namespace stowhaven
