#pragma once

#include <chrono>
#include <compare>
#include <string>
#include <string_view>

namespace stowhaven {

// The one date type of the system: seconds since 2001-01-01 00:00:00 UTC, the reference
// date, as a double, as the device keeps dates in its property lists and archives.
class Date {
public:
    // Seconds between the Unix epoch and the reference date.
    static constexpr double kTimeIntervalBetween1970AndReferenceDate = 978307200.0;

    constexpr Date() = default;
    constexpr explicit Date(double timeIntervalSinceReferenceDate) : seconds_(timeIntervalSinceReferenceDate) {}

    static constexpr Date dateWithTimeIntervalSince1970(double seconds) {
        return Date(seconds - kTimeIntervalBetween1970AndReferenceDate);
    }
    static Date dateWithTimePoint(std::chrono::system_clock::time_point timePoint);

    constexpr double timeIntervalSinceReferenceDate() const { return seconds_; }
    constexpr double timeIntervalSince1970() const { return seconds_ + kTimeIntervalBetween1970AndReferenceDate; }
    // Dates beyond what a time_point can hold (about 292 years either side of 1970)
    // answer its earliest or latest value; a date that is not a number, the reference date.
    std::chrono::system_clock::time_point timePoint() const;

    constexpr double timeIntervalSinceDate(Date other) const { return seconds_ - other.seconds_; }
    constexpr Date dateByAddingTimeInterval(double seconds) const { return Date(seconds_ + seconds); }

    constexpr auto operator<=>(const Date&) const = default;

    // "2001-01-01 00:00:00 +0000", in UTC and to the second, as the device describes a date.
    std::string description() const;
    // "2001-01-01T00:00:00Z" in UTC, with milliseconds when the date has a fraction of a second.
    std::string iso8601() const;

private:
    std::string formatInUTC(std::string_view format) const;

    double seconds_ = 0;
};

}  // namespace stowhaven
