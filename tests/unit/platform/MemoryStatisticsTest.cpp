#include "platform/MemoryStatistics.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

TEST(MemoryStatisticsTest, FreeAndUsedMakeUpTheTotal) {
    const auto statistics = MemoryStatistics::fromMeminfo(
        "MemTotal:        2048000 kB\nMemFreeish:      1 kB\nMemFree:          512000 kB\n"
        "MemAvailable:    1024000 kB\n");
    ASSERT_TRUE(statistics);
    EXPECT_EQ(statistics->totalBytes, 2048000u * 1024);
    EXPECT_EQ(statistics->freeBytes, 512000u * 1024);
    EXPECT_EQ(statistics->usedBytes, 1536000u * 1024);
    EXPECT_TRUE(MemoryStatistics::read()) << "the host's own listing";
}

}  // namespace
}  // namespace stowhaven
