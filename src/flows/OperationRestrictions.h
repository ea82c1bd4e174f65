#pragma once

#include <optional>
#include <string>

namespace stowhaven {

// Why no backup or restore may start now, in the words the user is shown, or nothing
// when one may: the device must be on power or charged enough where the settings ask it,
// and a network engine needs a network, Wi-Fi where the settings ask it. First hit wins.
std::optional<std::string> operationRestriction();

}  // namespace stowhaven
