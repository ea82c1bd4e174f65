#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace stowhaven {

// The progress of one upload or download of a network engine: the fraction on the job's
// bar, never full before the transfer has ended, and the banner text, "UP: 42% @ 512Kb/s",
// posted as "UPDATE_TRANSFER_BANNER" (object: the text) on the main queue. Polled often, it
// tells the screens only when the percent changes.
class TransferDisplay {
public:
    enum class Direction { Upload, Download };

    // What the banner shows before anything is known, and when nothing is to tell.
    static constexpr const char* kUnknownBanner = "...";
    static constexpr const char* kIdleBanner = "---: --- @ ---";

    explicit TransferDisplay(Direction direction);
    ~TransferDisplay();

    // BYTESDONE of TOTALBYTES, 0 while the total is unknown.
    void update(std::int64_t bytesDone, std::int64_t totalBytes, std::optional<double> bytesPerSecond);

    static std::string bannerText(Direction direction, double fraction, std::optional<double> bytesPerSecond);

private:
    Direction direction_;
    int shownPercent_ = -1;
};

}  // namespace stowhaven
