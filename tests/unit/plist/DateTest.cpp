#include "platform/Date.h"

#include <gtest/gtest.h>

#include <cmath>

namespace stowhaven {
namespace {

using namespace std::chrono;

// 2015-03-04 13:00:00 UTC.
constexpr double kSinceReferenceDate = 447166800;

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
