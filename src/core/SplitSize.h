#pragma once

#include <cstdint>

namespace stowhaven {

// The size of the parts that bulk data is cut into, in megabytes, from the setting
// "SplitSizeInMegaBytes". A setting that is missing or 0 becomes 20, which is stored; one
// outside the sizes split takes (below 1, or past 32 bits) reads as the nearest of them.
std::uint64_t settledSplitSizeInMegaBytes();

}  // namespace stowhaven
