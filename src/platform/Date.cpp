#include "platform/Date.h"

#include <fmt/format.h>

#include <cmath>

namespace stowhaven {

namespace {

using std::chrono::system_clock;

// Beyond this the calendar types of <chrono> can't name the year (about 31,000 years).
constexpr double kDescribableSeconds = 1e12;

}  // namespace

Date Date::dateWithTimePoint(system_clock::time_point timePoint) {
    const std::chrono::duration<double> sinceEpoch = timePoint.time_since_epoch();
    return dateWithTimeIntervalSince1970(sinceEpoch.count());
}

system_clock::time_point Date::timePoint() const {
    // The tick count is checked as a double before it becomes an integer: converting an
    // out-of-range double is undefined.
    const std::chrono::duration<double, system_clock::period> ticks =
        std::chrono::duration<double>(timeIntervalSince1970());
    constexpr auto kLastTick = static_cast<double>(system_clock::duration::max().count());
    if (std::isnan(ticks.count())) return Date().timePoint();
    if (ticks.count() >= kLastTick) return system_clock::time_point::max();
    if (ticks.count() <= -kLastTick) return system_clock::time_point::min();
    return system_clock::time_point(system_clock::duration(static_cast<system_clock::rep>(ticks.count())));
}

// The date's calendar fields in UTC, to the second, through FORMAT with the fields in the
// order year, month, day, hours, minutes, seconds; a date beyond the calendar says so.
std::string Date::formatInUTC(std::string_view format) const {
    using namespace std::chrono;
    const double whole = std::floor(timeIntervalSince1970());
    if (!(std::fabs(whole) < kDescribableSeconds)) {
        return fmt::format("{} seconds after 2001-01-01 00:00:00 +0000", seconds_);
    }
    const sys_seconds moment{seconds(static_cast<seconds::rep>(whole))};
    const sys_days day = floor<days>(moment);
    const year_month_day calendarDay(day);
    const hh_mm_ss time(moment - day);
    return fmt::vformat(
        format, fmt::make_format_args(static_cast<int>(calendarDay.year()), static_cast<unsigned>(calendarDay.month()),
                                      static_cast<unsigned>(calendarDay.day()), time.hours().count(),
                                      time.minutes().count(), time.seconds().count()));
}

std::string Date::description() const { return formatInUTC("{:04}-{:02}-{:02} {:02}:{:02}:{:02} +0000"); }

std::string Date::iso8601() const {
    std::string text = formatInUTC("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}");
    const double fraction = timeIntervalSince1970() - std::floor(timeIntervalSince1970());
    if (fraction > 0 && std::isfinite(fraction)) {
        const auto milliseconds = static_cast<int>(std::lround(fraction * 1000));
        if (milliseconds > 0 && milliseconds < 1000) text += fmt::format(".{:03}", milliseconds);
    }
    return text + "Z";
}

}  // namespace stowhaven
