#pragma once

#include <cstdint>

namespace stowhaven {

// The size of the parts that bulk data is cut into, in megabytes, from the setting
// "SplitSizeInMegaBytes". A setting that is missing or not above 0 becomes 20, which is
// stored.
std::uint64_t settledSplitSizeInMegaBytes();

}  // namespace stowhaven
