#include "core/BackupSession.h"
#include "flows/BackupCalendar.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

std::shared_ptr<BackupSession> sessionAtNoonUTC(int year, unsigned month, unsigned day) {
    using namespace std::chrono;
    auto session = std::make_shared<BackupSession>();
    const sys_seconds noon = sys_days(std::chrono::year(year) / month / day) + hours(12);
    session->setSessionDate(Date::dateWithTimeIntervalSince1970(static_cast<double>(noon.time_since_epoch().count())));
    return session;
}

std::vector<unsigned> numbersOf(const BackupCalendar::Week& week) {
    std::vector<unsigned> numbers;
    for (const auto& day : week) numbers.push_back(day.number);
    return numbers;
}

// February 2026 fills four weeks from Sunday exactly; April 2026 begins on a Wednesday. The
// calendar opens at the newest session's month, whatever order the sessions come in.
TEST(BackupCalendarTest, MonthsAreWeeksFromSundayWithTheDaysOfSessionsMarked) {
    const auto lastOfFebruary = sessionAtNoonUTC(2026, 2, 28);
    const auto undated = std::make_shared<BackupSession>();
    undated->setSessionDate(std::nullopt);
    BackupCalendar calendar({sessionAtNoonUTC(2026, 3, 1), nullptr, lastOfFebruary, undated}, Date(0));
    EXPECT_EQ(calendar.title(), "March 2026");
    EXPECT_TRUE(calendar.weeks()[0][0].hasSession);

    calendar.showPreviousMonth();
    EXPECT_EQ(calendar.title(), "February 2026");
    const auto february = calendar.weeks();
    ASSERT_EQ(february.size(), 4u);
    EXPECT_EQ(numbersOf(february[0]), (std::vector<unsigned>{1, 2, 3, 4, 5, 6, 7}));
    EXPECT_TRUE(february[3][6].hasSession);
    EXPECT_FALSE(february[3][5].hasSession);
    EXPECT_EQ(calendar.sessionsOn(28), std::vector{lastOfFebruary});

    calendar.showNextMonth();
    calendar.showNextMonth();
    const auto april = calendar.weeks();
    EXPECT_EQ(numbersOf(april[0]), (std::vector<unsigned>{0, 0, 0, 1, 2, 3, 4}));
    EXPECT_EQ(numbersOf(april.back()), (std::vector<unsigned>{26, 27, 28, 29, 30, 0, 0}));
    EXPECT_TRUE(calendar.sessionsOn(1).empty());
}

}  // namespace
}  // namespace stowhaven
