#include "flows/BackupCalendar.h"

#include "core/BackupSession.h"
#include "core/Supervisor.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace stowhaven {

namespace {

constexpr std::array<const char*, 12> kMonthNames = {"January",   "February", "March",    "April",
                                                     "May",       "June",     "July",     "August",
                                                     "September", "October",  "November", "December"};

int numberAt(const std::string& text, std::size_t at, std::size_t length) {
    int number = 0;
    std::from_chars(text.data() + at, text.data() + at + length, number);
    return number;
}

// The day in the device's time zone, from the session stamp "yyyy-MM-dd_HH~mm~ss".
std::chrono::year_month_day localDayOf(Date date) {
    const std::string stamp = gDateFormatter.stringFromDate(date);
    if (stamp.size() < 10) return {};
    return {std::chrono::year(numberAt(stamp, 0, 4)), std::chrono::month(numberAt(stamp, 5, 2)),
            std::chrono::day(numberAt(stamp, 8, 2))};
}

}  // namespace

BackupCalendar::BackupCalendar(std::vector<std::shared_ptr<BackupSession>> sessions, Date today) {
    std::erase_if(sessions, [](const auto& session) { return !session || !session->sessionDate(); });
    std::sort(sessions.begin(), sessions.end(),
              [](const auto& a, const auto& b) { return *a->sessionDate() < *b->sessionDate(); });
    for (auto& session : sessions) sessions_.push_back({localDayOf(*session->sessionDate()), std::move(session)});
    const auto shown = sessions_.empty() ? localDayOf(today) : sessions_.back().day;
    month_ = shown.ok() ? shown.year() / shown.month() : std::chrono::year(2001) / std::chrono::January;
}

std::string BackupCalendar::title() const {
    const unsigned month = static_cast<unsigned>(month_.month());
    return fmt::format("{} {}", month >= 1 && month <= 12 ? kMonthNames[month - 1] : "?",
                       static_cast<int>(month_.year()));
}

std::vector<BackupCalendar::Week> BackupCalendar::weeks() const {
    using namespace std::chrono;
    const unsigned length = static_cast<unsigned>((month_ / last).day());
    std::size_t column = weekday(sys_days(month_ / 1)).c_encoding();
    std::vector<Week> weeks(1);
    for (unsigned number = 1; number <= length; ++number) {
        if (column == 7) {
            weeks.emplace_back();
            column = 0;
        }
        weeks.back()[column++] = {number, !sessionsOn(number).empty()};
    }
    return weeks;
}

std::vector<std::shared_ptr<BackupSession>> BackupCalendar::sessionsOn(unsigned day) const {
    const std::chrono::year_month_day wanted = month_ / std::chrono::day(day);
    std::vector<std::shared_ptr<BackupSession>> found;
    for (const Dated& dated : sessions_) {
        if (dated.day == wanted) found.push_back(dated.session);
    }
    return found;
}

}  // namespace stowhaven
