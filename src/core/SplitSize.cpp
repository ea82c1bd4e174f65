#include "core/SplitSize.h"

#include "core/SettingsKeys.h"
#include "core/Supervisor.h"

namespace stowhaven {

namespace {

constexpr std::int64_t kDefaultSplitSize = 20;
constexpr const char* kSplitSizeKey = "SplitSizeInMegaBytes";

}  // namespace

std::uint64_t settledSplitSizeInMegaBytes() {
    Supervisor& supervisor = Supervisor::shared();
    const auto stored = supervisor.lowLevelGetNumberPreferencesDataForKey(kSplitSizeKey);
    const std::int64_t size = stored ? stored->numberAsInteger().value_or(0) : 0;
    if (size != 0) return static_cast<std::uint64_t>(SettingsKeys::withinRange(kSplitSizeKey, size));
    supervisor.lowLevelStorePreferencesData(PlistValue(kDefaultSplitSize), kSplitSizeKey);
    return kDefaultSplitSize;
}

}  // namespace stowhaven
