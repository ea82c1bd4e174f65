#include "platform/JobLock.h"
#include "support/DeviceRootScope.h"
#include "support/TestFolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace stowhaven {
namespace {

// A job of the program's own doesn't keep its own sweeps from running, and holds off a
// second job of any kind until it ends.
TEST(JobLockTest, AJobLetsItsOwnProcessSweepAndHoldsOffASecondJobUntilItEnds) {
    const test::TestFolder folder;
    const test::DeviceRootScope root(folder.path().string());
    std::string refusal;
    auto backup = JobLock::take("backup", Date(0), refusal);
    ASSERT_TRUE(backup) << refusal;

    bool swept = false;
    EXPECT_EQ(JobLock::unlessAnotherProcessRunsAJob([&swept] { swept = true; }), std::nullopt);
    EXPECT_TRUE(swept);
    EXPECT_FALSE(JobLock::take("restore", Date(60), refusal));
    EXPECT_EQ(refusal, "A backup started on 2001-01-01 00:00:00 +0000 by process " + std::to_string(getpid()) +
                           " is running on this device: one backup or restore at a time");

    backup.reset();
    EXPECT_TRUE(JobLock::take("restore", Date(60), refusal));
}

}  // namespace
}  // namespace stowhaven
