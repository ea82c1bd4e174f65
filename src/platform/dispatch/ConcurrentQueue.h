#pragma once

#include "platform/dispatch/Queue.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace stowhaven {

// A queue whose blocks run side by side on a pool of threads, in the order they were sent
// as far as starting goes. A thread is added whenever a block arrives that no idle thread
// will take, up to the limit, so that a block that waits for another one of the same queue
// still lets that one run.
class ConcurrentQueue final : public Queue {
public:
    explicit ConcurrentQueue(std::size_t maxThreads);
    ConcurrentQueue(const ConcurrentQueue&) = delete;
    ConcurrentQueue& operator=(const ConcurrentQueue&) = delete;
    ~ConcurrentQueue() override;

    void async(Block block) override;

    // Drops the blocks that have not started, waits for those that are running and ends
    // the threads. Blocks sent afterwards are dropped.
    void shutdown();

private:
    void serve();

    const std::size_t maxThreads_;
    std::mutex mutex_;
    std::condition_variable workArrived_;
    std::deque<Block> pending_;
    std::vector<std::thread> threads_;
    std::size_t idleThreads_ = 0;
    bool shutDown_ = false;
};

}  // namespace stowhaven
