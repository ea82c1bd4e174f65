#include "platform/dispatch/Semaphore.h"

namespace stowhaven {

void Semaphore::signal() {
    // Notifies under the lock: the waiter may destroy the semaphore as soon as it is through.
    std::lock_guard lock(mutex_);
    ++value_;
    signalled_.notify_one();
}

void Semaphore::wait() {
    std::unique_lock lock(mutex_);
    signalled_.wait(lock, [this] { return value_ > 0; });
    --value_;
}

bool Semaphore::wait(std::chrono::duration<double> timeout) {
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::duration_cast<std::chrono::steady_clock::duration>(timeout);
    std::unique_lock lock(mutex_);
    if (!signalled_.wait_until(lock, deadline, [this] { return value_ > 0; })) return false;
    --value_;
    return true;
}

}  // namespace stowhaven
