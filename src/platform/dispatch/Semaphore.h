#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>

namespace stowhaven {

// A counting semaphore: each signal() lets one wait() through, whichever comes first.
class Semaphore {
public:
    explicit Semaphore(std::size_t initialValue = 0) : value_(initialValue) {}
    Semaphore(const Semaphore&) = delete;
    Semaphore& operator=(const Semaphore&) = delete;

    void signal();
    // Blocks until a signal is there to take.
    void wait();
    // Answers whether a signal was taken before the timeout ran out.
    bool wait(std::chrono::duration<double> timeout);

private:
    std::mutex mutex_;
    std::condition_variable signalled_;
    std::size_t value_;
};

}  // namespace stowhaven
