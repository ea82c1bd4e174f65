#include "storage/StorageLayout.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace stowhaven {
namespace {

// Sets the process's time zone, in the POSIX notation that needs no zone files, and puts
// the one before back afterwards.
class TimeZoneScope {
public:
    explicit TimeZoneScope(const char* zone) {
        if (const char* before = std::getenv("TZ")) before_ = before;
        setenv("TZ", zone, 1);
        tzset();
    }
    ~TimeZoneScope() {
        if (before_) {
            setenv("TZ", before_->c_str(), 1);
        } else {
            unsetenv("TZ");
        }
        tzset();
    }

private:
    std::optional<std::string> before_;
};

class StorageLayoutTest : public ::testing::Test {
protected:
    test::SupervisorScope scope_;
};

TEST_F(StorageLayoutTest, StampsAreInTheDevicesTimeZoneAndReadBackThere) {
    const Date date = Date::dateWithTimeIntervalSince1970(1726128000);  // 2024-09-12 08:00:00 UTC
    {
        const TimeZoneScope utc("UTC0");
        EXPECT_EQ(StorageLayout::stamp(date), "2024-09-12_08~00~00");
        EXPECT_EQ(StorageLayout::stamp(date.dateByAddingTimeInterval(0.75)), "2024-09-12_08~00~00");
        EXPECT_EQ(StorageLayout::dateOfStamp("2024-09-12_08~00~00"), date);
    }
    {
        const TimeZoneScope paris("CET-1CEST,M3.5.0,M10.5.0/3");
        EXPECT_EQ(StorageLayout::stamp(date), "2024-09-12_10~00~00") << "summer time, two hours ahead";
        EXPECT_EQ(StorageLayout::dateOfStamp(StorageLayout::stamp(date)), date);
    }
    {
        const TimeZoneScope newYork("EST5EDT,M3.2.0,M11.1.0");
        EXPECT_EQ(StorageLayout::historyFileName(date), "2024-09-12_04~00~00.stowhvn");
        EXPECT_EQ(StorageLayout::dateOfHistoryFile("2024-09-12_04~00~00.stowhvn"), date);
    }
}

TEST_F(StorageLayoutTest, NamesThatHoldNoStampOfARealDayGiveNoDate) {
    for (const char* name : {"holiday", "2024-13-01_10~00~00", "2014-02-31_10~00~00", "2014-03-09_24~00~00",
                             "2014-03-09 17:05:42", "2014-03-09_17~05~4", "", "abcd-03-09_17~05~42"}) {
        EXPECT_EQ(StorageLayout::dateOfHistoryFile(name + std::string(".stowhvn")), std::nullopt) << name;
    }
    EXPECT_TRUE(StorageLayout::dateOfHistoryFile("2024-01-01_10~00~00.stowhvn.stowhvn")) << "every suffix is taken out";
}

}  // namespace
}  // namespace stowhaven
