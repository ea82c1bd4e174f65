#include "platform/LifeCycleSignals.h"
#include "unit/dispatch/DispatchTestHelpers.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>

namespace stowhaven {
namespace {

// The watching thread outlives the test, so what it counts lives as long as the process.
std::atomic<int> gHangUps{0};
std::atomic<int> gTerminations{0};
std::atomic<int> gResumptions{0};
std::atomic<int> gInterrupts{0};

// Watching is for the whole process, once: one test covers every signal.
TEST(LifeCycleSignalsTest, EachSignalReachesItsOwnHandlerAndTheProcessGoesOn) {
    LifeCycleSignals::watch({
        .hangUp = [] { ++gHangUps; },
        .terminate = [] { ++gTerminations; },
        .resume = [] { ++gResumptions; },
        .interrupt = [] { ++gInterrupts; },
    });

    ASSERT_EQ(std::raise(SIGTERM), 0);
    EXPECT_TRUE(test::eventually([] { return gTerminations == 1; }));
    ASSERT_EQ(std::raise(SIGHUP), 0);
    EXPECT_TRUE(test::eventually([] { return gHangUps == 1; }));
    ASSERT_EQ(std::raise(SIGCONT), 0);
    EXPECT_TRUE(test::eventually([] { return gResumptions == 1; }));
    ASSERT_EQ(std::raise(SIGINT), 0);
    EXPECT_TRUE(test::eventually([] { return gInterrupts == 1; }));

    EXPECT_EQ(gTerminations + gHangUps + gResumptions + gInterrupts, 4) << "each signal once, to its own handler";
}

}  // namespace
}  // namespace stowhaven
