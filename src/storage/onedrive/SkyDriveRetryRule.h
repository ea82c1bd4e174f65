#pragma once

#include "net/RestClient.h"

#include <chrono>
#include <optional>

namespace stowhaven {

// When OneDrive's requests are sent again: eleven tries in all for a connection that fails or
// drops, a throttling reply (420) and a reply of a server in trouble (500, 502, 503, 504).
// The wait is 5 seconds, or the Retry-After the service sent instead, or for a 420 the
// seconds its message names plus 60. Other refusals (a 404, a 409) would come back the same: they end the
// request at once.
struct SkyDriveRetryRule {
    static constexpr int kMaximumRetries = 10;
    static constexpr std::chrono::seconds kPause{5};
    static constexpr std::chrono::seconds kThrottleMargin{60};

    // The wait before the next try after REPLY, or none when it isn't tried again.
    static std::optional<std::chrono::milliseconds> pauseAfter(const RestReply& reply);

    // The pause in place of kPause; tests that drop connections many times shorten it.
    static std::chrono::milliseconds pause();
    static void setPauseForTesting(std::chrono::milliseconds pause);
};

}  // namespace stowhaven
