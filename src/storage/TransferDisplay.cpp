#include "storage/TransferDisplay.h"

#include "core/Supervisor.h"
#include "platform/dispatch/MainQueue.h"
#include "platform/dispatch/NotificationCenter.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace stowhaven {

namespace {

// The bar stays short of full until the transfer has ended.
constexpr double kAlmostDone = 0.99999;
// From this rate on the banner counts megabytes.
constexpr double kMegabytesPerSecond = 1049600;

void postBanner(std::string text) {
    MainQueue::shared().async(
        [text = std::move(text)] { NotificationCenter::defaultCenter().post("UPDATE_TRANSFER_BANNER", text); });
}

}  // namespace

TransferDisplay::TransferDisplay(Direction direction) : direction_(direction) { postBanner(kUnknownBanner); }

TransferDisplay::~TransferDisplay() { postBanner(""); }

std::string TransferDisplay::bannerText(Direction direction, double fraction, std::optional<double> bytesPerSecond) {
    if (fraction <= 0) return kIdleBanner;
    const char* word = direction == Direction::Upload ? "UP" : "DL";
    if (!bytesPerSecond) return fmt::format("{}: {:.0f}%", word, fraction * 100);
    if (*bytesPerSecond >= kMegabytesPerSecond) {
        return fmt::format("{}: {:.0f}% @ {:.2f}Mb/s", word, fraction * 100, *bytesPerSecond / 1024 / 1024);
    }
    return fmt::format("{}: {:.0f}% @ {:.0f}Kb/s", word, fraction * 100, std::floor(*bytesPerSecond / 1024));
}

void TransferDisplay::update(std::int64_t bytesDone, std::int64_t totalBytes, std::optional<double> bytesPerSecond) {
    const double fraction = totalBytes > 0 ? static_cast<double>(bytesDone) / static_cast<double>(totalBytes) : 0;
    const int percent = static_cast<int>(fraction * 100);
    if (percent == shownPercent_) return;
    shownPercent_ = percent;
    postBanner(bannerText(direction_, fraction, bytesPerSecond));
    Supervisor::shared().notifyProgress(std::min(fraction, kAlmostDone), std::nullopt);
}

}  // namespace stowhaven
