#include "storage/sugarsync/SugarSyncRetries.h"

#include "core/Supervisor.h"
#include "platform/Log.h"
#include "platform/dispatch/Semaphore.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <chrono>

namespace stowhaven {

namespace {

// The figure of the retry text; the retries themselves don't wait.
constexpr int kShownDelaySeconds = 5;
constexpr std::chrono::seconds kLongestRetryAfter{30};
// How often a wait looks for a cancel.
constexpr std::chrono::milliseconds kCancelPoll{20};

std::chrono::seconds retryAfter(const RestReply& reply) {
    const auto value = reply.header("Retry-After");
    long seconds = 0;
    if (!value || std::from_chars(value->data(), value->data() + value->size(), seconds).ec != std::errc()) {
        return std::chrono::seconds(0);
    }
    return std::clamp(std::chrono::seconds(seconds), std::chrono::seconds(0), kLongestRetryAfter);
}

}  // namespace

bool SugarSyncRetries::waitUnlessCanceled(std::chrono::seconds wait) {
    const Supervisor& supervisor = Supervisor::shared();
    Semaphore never;
    for (auto left = std::chrono::duration_cast<std::chrono::milliseconds>(wait); left.count() > 0; left -= kCancelPoll) {
        if (supervisor.isCanceled()) return false;
        never.wait(std::min(left, kCancelPoll));
    }
    return !supervisor.isCanceled();
}

void SugarSyncRetries::displayErrorMessage(const std::string& error) {
    if (count_ == kMarker) count_ = 0;
    if (count_ < kMaximum) {
        Supervisor::shared().notifyProgress(
            std::nullopt, fmt::format("Retrying {}/{} in {}s...", count_, kMaximum, kShownDelaySeconds));
        return;
    }
    count_ = kMarker;
    const Supervisor& supervisor = Supervisor::shared();
    if (!error.empty() && !supervisor.isCanceled() && supervisor.isStorageSugarSync()) {
        Supervisor::showAlert("SugarSync Server Message", error);
    }
}

bool SugarSyncRetries::failed(const std::string& error, const RestReply& reply) {
    bool again = false;
    {
        std::lock_guard lock(mutex_);
        displayErrorMessage(error);
        again = count_++ < kMaximum;
    }
    if (!again || Supervisor::shared().isCanceled()) return false;
    return waitUnlessCanceled(retryAfter(reply));
}

void SugarSyncRetries::readReply() {
    std::lock_guard lock(mutex_);
    count_ = 0;
}

std::int32_t SugarSyncRetries::count() const {
    std::lock_guard lock(mutex_);
    return count_;
}

}  // namespace stowhaven
