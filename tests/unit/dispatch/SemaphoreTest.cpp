#include "platform/dispatch/Semaphore.h"

#include "unit/dispatch/DispatchTestHelpers.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

using namespace std::chrono_literals;
using test::kFailureGuard;

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
