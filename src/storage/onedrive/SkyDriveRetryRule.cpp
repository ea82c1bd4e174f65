#include "storage/onedrive/SkyDriveRetryRule.h"

#include "storage/onedrive/SkyDriveReplies.h"

#include <atomic>

namespace stowhaven {

namespace {

constexpr long kThrottled = 420;

std::atomic<std::chrono::milliseconds::rep> gPause{
    std::chrono::duration_cast<std::chrono::milliseconds>(SkyDriveRetryRule::kPause).count()};

}  // namespace

std::chrono::milliseconds SkyDriveRetryRule::pause() { return std::chrono::milliseconds(gPause.load()); }

void SkyDriveRetryRule::setPauseForTesting(std::chrono::milliseconds pause) { gPause = pause.count(); }

std::optional<std::chrono::milliseconds> SkyDriveRetryRule::pauseAfter(const RestReply& reply) {
    if (reply.code != CURLE_OK) {
        if (!reply.isDroppedConnection()) return std::nullopt;
        return pause();
    }
    if (reply.status == kThrottled) {
        const auto seconds = SkyDriveReplies::throttleSeconds(reply.body);
        if (!seconds) return std::nullopt;
        return std::chrono::seconds(*seconds) + kThrottleMargin;
    }
    if (reply.status == 500 || reply.status == 502 || reply.status == 503 || reply.status == 504) {
        if (const auto asked = reply.retryAfter()) return *asked;
        return pause();
    }
    return std::nullopt;
}

}  // namespace stowhaven
