#include "platform/dispatch/MainQueue.h"

#include "unit/dispatch/DispatchTestHelpers.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace stowhaven {
namespace {

using namespace std::chrono_literals;
using test::kFailureGuard;
using Ran = std::vector<std::string>;

class MainQueueTest : public testing::Test {
protected:
    void SetUp() override { mainQueue_.bindToCurrentThread(); }

    MainQueue& mainQueue_ = MainQueue::shared();
    const std::thread::id testThread_ = std::this_thread::get_id();
};

TEST_F(MainQueueTest, BlocksSentFromAnyThreadRunOnTheBoundThreadInOrder) {
    std::vector<int> order;
    std::vector<std::thread::id> threads;
    std::thread([&] {
        for (int i = 0; i < 5; ++i) {
            mainQueue_.async([&, i] {
                order.push_back(i);
                threads.push_back(std::this_thread::get_id());
            });
        }
    }).join();

    ASSERT_TRUE(mainQueue_.runUntil([&] { return order.size() == 5; }, kFailureGuard));
    EXPECT_EQ(order, (std::vector{0, 1, 2, 3, 4}));
    EXPECT_EQ(threads, std::vector(5, testThread_));
}

TEST_F(MainQueueTest, SyncWaitsForTheMainThreadElsewhereAndRunsInlineOnIt) {
    std::thread::id ranOn;
    int seenAfterSync = 0;
    std::atomic<bool> syncReturned = false;
    std::thread sender([&] {
        int value = 0;
        mainQueue_.sync([&] {
            ranOn = std::this_thread::get_id();
            value = 42;
        });
        seenAfterSync = value;
        syncReturned = true;
    });
    ASSERT_TRUE(mainQueue_.runUntil([&] { return syncReturned.load(); }, kFailureGuard));
    sender.join();
    EXPECT_EQ(ranOn, testThread_);
    EXPECT_EQ(seenAfterSync, 42);

    Ran ran;
    mainQueue_.async([&] {
        mainQueue_.sync([&] { ran.push_back("nested"); });
        ran.push_back("after nested");
    });
    mainQueue_.runOnce();
    EXPECT_EQ(ran, (Ran{"nested", "after nested"}));
}

TEST_F(MainQueueTest, RunOnceRunsOnlyWhatWasPendingAndOnlyOnTheMainThread) {
    Ran ran;
    mainQueue_.async([&] {
        ran.push_back("first");
        mainQueue_.async([&] { ran.push_back("sent during the turn"); });
    });
    mainQueue_.async([&] { ran.push_back("second"); });

    std::size_t ranOffTheMainThread = 1;
    std::thread([&] { ranOffTheMainThread = mainQueue_.runOnce(); }).join();
    EXPECT_EQ(ranOffTheMainThread, 0u);

    EXPECT_EQ(mainQueue_.runOnce(), 2u);
    EXPECT_EQ(ran, (Ran{"first", "second"}));
    EXPECT_EQ(mainQueue_.runOnce(), 1u);
    EXPECT_EQ(mainQueue_.runOnce(), 0u);
}

TEST_F(MainQueueTest, ATurnNestedInABlockRunsEachBlockOnceAndInOrder) {
    Ran ran;
    mainQueue_.async([&] {
        ran.push_back("outer");
        mainQueue_.runOnce();
    });
    mainQueue_.async([&] { ran.push_back("next"); });
    mainQueue_.async([&] { ran.push_back("last"); });

    mainQueue_.runOnce();
    EXPECT_EQ(ran, (Ran{"outer", "next", "last"}));
    EXPECT_EQ(mainQueue_.runOnce(), 0u);
}

TEST_F(MainQueueTest, RunServesUntilStoppedAndAnEarlyStopEndsTheNextRun) {
    std::vector<int> ran;
    mainQueue_.async([&] { ran.push_back(1); });
    std::thread sender([&] {
        mainQueue_.async([&] {
            ran.push_back(2);
            mainQueue_.stop();
        });
    });
    mainQueue_.run();
    sender.join();
    EXPECT_EQ(ran, (std::vector{1, 2}));

    mainQueue_.stop();
    mainQueue_.async([&] { ran.push_back(3); });
    mainQueue_.run();
    EXPECT_EQ(ran.size(), 2u);
    EXPECT_EQ(mainQueue_.runOnce(), 1u);

    EXPECT_FALSE(mainQueue_.runUntil([] { return false; }, 0ms)) << "a condition never met gives up";
}

}  // namespace
}  // namespace stowhaven
