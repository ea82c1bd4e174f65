#pragma once

#include <string>

namespace stowhaven {

// The program's icon, 60 by 60 pixels, as PNG: the picture of its contact records.
std::string appIconPNGData();

}  // namespace stowhaven
