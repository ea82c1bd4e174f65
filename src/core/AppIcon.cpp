#include "core/AppIcon.h"

#include <string_view>

namespace stowhaven {

std::string_view embeddedAppIcon();

std::string appIconPNGData() { return std::string(embeddedAppIcon()); }

}  // namespace stowhaven
