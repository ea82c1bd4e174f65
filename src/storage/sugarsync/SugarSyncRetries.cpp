#include "storage/sugarsync/SugarSyncRetries.h"

#include "core/Supervisor.h"
#include "platform/Log.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>

namespace stowhaven {

namespace {

// The figure of the retry text; the retries themselves don't wait.
constexpr int kShownDelaySeconds = 5;
constexpr std::chrono::seconds kLongestRetryAfter{30};

}  // namespace

bool SugarSyncRetries::waitUnlessCanceled(std::chrono::seconds wait) {
    return RestClient::waitUnlessCanceled(wait, [] { return Supervisor::shared().isCanceled(); });
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
    return waitUnlessCanceled(std::min(reply.retryAfter().value_or(std::chrono::seconds(0)), kLongestRetryAfter));
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
