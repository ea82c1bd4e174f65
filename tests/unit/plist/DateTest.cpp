#include "platform/Date.h"

#include <gtest/gtest.h>

#include <cmath>

namespace stowhaven {
namespace {

using namespace std::chrono;

// 2015-03-04 13:00:00 UTC.
constexpr double kUnixTime = 1425474000;
constexpr double kSinceReferenceDate = 447166800;

TEST(DateTest, CountsFromTheReferenceDateAndConvertsToUnixTime) {
    EXPECT_EQ(Date::dateWithTimeIntervalSince1970(978307200), Date());
    const Date date = Date::dateWithTimeIntervalSince1970(kUnixTime);
    EXPECT_EQ(date.timeIntervalSinceReferenceDate(), kSinceReferenceDate);
    EXPECT_EQ(date.timeIntervalSince1970(), kUnixTime);
    EXPECT_EQ(Date(-0.25).timeIntervalSince1970(), 978307199.75);
}

TEST(DateTest, ConvertsToAndFromTimePoints) {
    const sys_time<system_clock::duration> moment = sys_days{2015y / March / 4} + 13h + 250ms;
    const Date date = Date::dateWithTimePoint(moment);
    EXPECT_DOUBLE_EQ(date.timeIntervalSinceReferenceDate(), kSinceReferenceDate + 0.25);
    // A double of seconds holds today's dates to a fraction of a microsecond.
    EXPECT_LT(abs(date.timePoint() - moment), 1us);
    EXPECT_EQ(Date().timePoint(), sys_days{2001y / January / 1});
}

TEST(DateTest, DatesBeyondATimePointSaturateInsteadOfOverflowing) {
    const Date distantFuture(63113904000);  // 4001-01-01
    EXPECT_EQ(distantFuture.timePoint(), system_clock::time_point::max());
    EXPECT_EQ(Date(-63113904000).timePoint(), system_clock::time_point::min());
    EXPECT_EQ(Date(1e300).timePoint(), system_clock::time_point::max());
    EXPECT_EQ(Date(NAN).timePoint(), Date().timePoint());
}

TEST(DateTest, DescribesItselfInUtcToTheSecond) {
    EXPECT_EQ(Date().description(), "2001-01-01 00:00:00 +0000");
    EXPECT_EQ(Date(kSinceReferenceDate + 59.9).description(), "2015-03-04 13:00:59 +0000");
    EXPECT_EQ(Date(-0.5).description(), "2000-12-31 23:59:59 +0000");
    EXPECT_EQ(Date(63113904000).description(), "4001-01-01 00:00:00 +0000");
    EXPECT_EQ(Date(1e15).description(), "1000000000000000 seconds after 2001-01-01 00:00:00 +0000");
}

}  // namespace
}  // namespace stowhaven
