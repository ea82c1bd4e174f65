#include "platform/dispatch/GlobalQueue.h"

#include "platform/dispatch/DispatchTimer.h"
#include "platform/dispatch/MainQueue.h"
#include "platform/dispatch/NotificationCenter.h"
#include "platform/dispatch/Semaphore.h"
#include "unit/dispatch/DispatchTestHelpers.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace stowhaven {
namespace {

using namespace std::chrono_literals;
using test::eventually;
using test::kFailureGuard;
using test::RecordingQueue;
using Priority = GlobalQueue::Priority;

TEST(GlobalQueueTest, EachPriorityRunsBlocksSideBySideOffTheMainThread) {
    MainQueue::shared().bindToCurrentThread();
    for (const auto priority : {Priority::High, Priority::Default, Priority::Background}) {
        SCOPED_TRACE(static_cast<int>(priority));
        Semaphore firstStarted, secondStarted, done;
        std::atomic<bool> firstSawSecond = false, secondSawFirst = false, ranOnMainThread = false;
        // Each block waits for the other to start: a queue that ran them one after the
        // other would leave the first waiting in vain.
        auto& queue = GlobalQueue::get(priority);
        queue.async([&] {
            ranOnMainThread = ranOnMainThread || MainQueue::shared().isMainThread();
            firstStarted.signal();
            firstSawSecond = secondStarted.wait(kFailureGuard);
            done.signal();
        });
        queue.async([&] {
            ranOnMainThread = ranOnMainThread || MainQueue::shared().isMainThread();
            secondStarted.signal();
            secondSawFirst = firstStarted.wait(kFailureGuard);
            done.signal();
        });

        ASSERT_TRUE(done.wait(kFailureGuard));
        ASSERT_TRUE(done.wait(kFailureGuard));
        EXPECT_TRUE(firstSawSecond);
        EXPECT_TRUE(secondSawFirst);
        EXPECT_FALSE(ranOnMainThread);
    }
}

TEST(ConcurrentQueueTest, ShutdownDropsWaitingBlocksAndWaitsForTheRunningOne) {
    ConcurrentQueue queue(1);
    Semaphore started, release;
    std::atomic<bool> runningFinished = false, waitingRan = false;
    queue.async([&] {
        started.signal();
        release.wait(kFailureGuard);
        runningFinished = true;
    });
    ASSERT_TRUE(started.wait(kFailureGuard));
    auto capture = std::make_shared<int>();
    const std::weak_ptr<int> waitingCapture = capture;
    queue.async([&, capture] { waitingRan = true; });
    capture.reset();

    bool finishedBeforeShutdownReturned = false;
    std::thread stopper([&] {
        queue.shutdown();
        finishedBeforeShutdownReturned = runningFinished;
    });
    EXPECT_TRUE(eventually([&] { return waitingCapture.expired(); }));
    release.signal();
    stopper.join();
    EXPECT_TRUE(finishedBeforeShutdownReturned);
    EXPECT_FALSE(waitingRan);

    auto lateCapture = std::make_shared<int>();
    const std::weak_ptr<int> late = lateCapture;
    queue.async([lateCapture] {});
    lateCapture.reset();
    EXPECT_TRUE(late.expired());
}

// At exit the queues and the timer end their threads; work that is still running must find
// everything it reaches for alive, and nothing may be reported as leaked.
class DispatchExitTest : public testing::Test {
protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(DispatchExitTest, ExitDropsWaitingWorkAndLetsRunningBlocksFinish) {
    EXPECT_EXIT(
        {
            auto started = std::make_shared<Semaphore>();
            dispatchAfter(1h, GlobalQueue::get(Priority::Default), [started] {});
            GlobalQueue::get(Priority::Background).async([started] {
                started->signal();
                std::this_thread::sleep_for(100ms);  // so that exit is under way by now
                dispatchAfter(0s, MainQueue::shared(), [] {});
                GlobalQueue::get(Priority::High).async([] {});
                NotificationCenter::defaultCenter().post("LATE");
                std::fputs("running block finished\n", stderr);
            });
            started->wait();
            std::exit(0);
        },
        testing::ExitedWithCode(0), "running block finished");
}

TEST_F(DispatchExitTest, ABlockMayEndTheProcess) {
    EXPECT_EXIT(
        {
            GlobalQueue::get(Priority::Default).async([] { std::exit(0); });
            Semaphore().wait();
        },
        testing::ExitedWithCode(0), "");
}

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
