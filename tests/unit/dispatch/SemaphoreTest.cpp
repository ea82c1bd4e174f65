#include "platform/dispatch/Semaphore.h"

#include "unit/dispatch/DispatchTestHelpers.h"

#include <gtest/gtest.h>

#include <thread>

namespace stowhaven {
namespace {

using namespace std::chrono_literals;
using test::kFailureGuard;

TEST(SemaphoreTest, EachSignalLetsExactlyOneWaitThrough) {
    Semaphore semaphore(1);
    semaphore.signal();
    EXPECT_TRUE(semaphore.wait(kFailureGuard));
    EXPECT_TRUE(semaphore.wait(kFailureGuard));
    EXPECT_FALSE(semaphore.wait(20ms));

    semaphore.signal();
    semaphore.wait();
    EXPECT_FALSE(semaphore.wait(0s));
}

TEST(SemaphoreTest, AWaitReturnsOnceAnotherThreadSignals) {
    Semaphore request, answer;
    bool answered = false;
    std::thread engine([&] {
        request.wait();
        answered = true;
        answer.signal();
    });
    request.signal();
    EXPECT_TRUE(answer.wait(kFailureGuard));
    engine.join();
    EXPECT_TRUE(answered);
}

}  // namespace
}  // namespace stowhaven
