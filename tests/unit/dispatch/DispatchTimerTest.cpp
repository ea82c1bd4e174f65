#include "platform/dispatch/DispatchTimer.h"

#include "platform/dispatch/GlobalQueue.h"
#include "platform/dispatch/MainQueue.h"
#include "platform/dispatch/Semaphore.h"
#include "unit/dispatch/DispatchTestHelpers.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace stowhaven {
namespace {

using namespace std::chrono_literals;
using test::kFailureGuard;
using test::RecordingQueue;

TEST(DispatchTimerTest, ShutdownDropsWaitingBlocksAndLaterOnes) {
    RecordingQueue queue;
    DispatchTimer timer;
    auto capture = std::make_shared<int>();
    const std::weak_ptr<int> waiting = capture;
    timer.schedule(1h, queue, [capture] {});
    capture.reset();
    EXPECT_FALSE(waiting.expired());

    timer.shutdown();
    EXPECT_TRUE(waiting.expired());

    auto lateCapture = std::make_shared<int>();
    const std::weak_ptr<int> late = lateCapture;
    timer.schedule(0s, queue, [lateCapture] {});
    lateCapture.reset();
    EXPECT_TRUE(late.expired());
    EXPECT_EQ(queue.pendingCount(), 0u);
}

// The order is the order of the due times, whatever the order of scheduling and however
// late the timer's thread comes to them.
TEST(DispatchAfterTest, BlocksRunOnTheirQueueInTheOrderTheyAreDue) {
    auto& mainQueue = MainQueue::shared();
    mainQueue.bindToCurrentThread();
    std::vector<std::string> ran;
    bool ranOnMainThread = false;
    dispatchAfter(200ms, mainQueue, [&] {
        ran.push_back("after 200ms");
        ranOnMainThread = mainQueue.isMainThread();
    });
    dispatchAfter(50ms, mainQueue, [&] { ran.push_back("after 50ms"); });
    ASSERT_TRUE(mainQueue.runUntil([&] { return ran.size() == 2; }, kFailureGuard));
    EXPECT_EQ(ran, (std::vector<std::string>{"after 50ms", "after 200ms"}));
    EXPECT_TRUE(ranOnMainThread);

    Semaphore ranInTheBackground;
    std::atomic<bool> onMainThread = true;
    dispatchAfter(10ms, GlobalQueue::get(GlobalQueue::Priority::Background), [&] {
        onMainThread = mainQueue.isMainThread();
        ranInTheBackground.signal();
    });
    ASSERT_TRUE(ranInTheBackground.wait(kFailureGuard));
    EXPECT_FALSE(onMainThread);
}

// Waits that another thread's signal ends are in every queue test; here the count.
TEST(SemaphoreTest, EachSignalLetsExactlyOneWaitThrough) {
    Semaphore semaphore(1);
    semaphore.signal();
    EXPECT_TRUE(semaphore.wait(kFailureGuard));
    EXPECT_TRUE(semaphore.wait(kFailureGuard));
    EXPECT_FALSE(semaphore.wait(0s));

    semaphore.signal();
    semaphore.wait();
    EXPECT_FALSE(semaphore.wait(0s));
}

}  // namespace
}  // namespace stowhaven
