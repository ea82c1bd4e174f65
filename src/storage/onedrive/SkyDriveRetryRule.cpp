#include "storage/onedrive/SkyDriveRetryRule.h"

#include "storage/onedrive/SkyDriveReplies.h"

#include <atomic>
#include <charconv>

namespace stowhaven {

namespace {

constexpr long kThrottled = 420;

std::atomic<std::chrono::milliseconds::rep> gPause{
    std::chrono::duration_cast<std::chrono::milliseconds>(SkyDriveRetryRule::kPause).count()};

bool isDroppedConnection(CURLcode code) {
    switch (code) {
        case CURLE_COULDNT_CONNECT:
        case CURLE_SEND_ERROR:
        case CURLE_RECV_ERROR:
        case CURLE_PARTIAL_FILE:
        case CURLE_GOT_NOTHING:
        case CURLE_OPERATION_TIMEDOUT:
            return true;
        default:
            return false;
    }
}

std::optional<std::chrono::seconds> retryAfter(const RestReply& reply) {
    const auto value = reply.header("Retry-After");
    long seconds = 0;
    if (!value) return std::nullopt;
    const auto [end, error] = std::from_chars(value->data(), value->data() + value->size(), seconds);
    if (error != std::errc() || end != value->data() + value->size() || seconds < 0) return std::nullopt;
    return std::chrono::seconds(seconds);
}

}  // namespace

std::chrono::milliseconds SkyDriveRetryRule::pause() { return std::chrono::milliseconds(gPause.load()); }

void SkyDriveRetryRule::setPauseForTesting(std::chrono::milliseconds pause) { gPause = pause.count(); }

std::optional<std::chrono::milliseconds> SkyDriveRetryRule::pauseAfter(const RestReply& reply) {
    if (reply.code != CURLE_OK) {
        if (!isDroppedConnection(reply.code)) return std::nullopt;
        return pause();
    }
    if (reply.status == kThrottled) {
        const auto seconds = SkyDriveReplies::throttleSeconds(reply.body);
        if (!seconds) return std::nullopt;
        return std::chrono::seconds(*seconds) + kThrottleMargin;
    }
    if (reply.status == 500 || reply.status == 502 || reply.status == 503 || reply.status == 504) {
        if (const auto asked = retryAfter(reply)) return *asked;
        return pause();
    }
    return std::nullopt;
}

}  // namespace stowhaven
