#pragma once

#include "platform/dispatch/Queue.h"

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

namespace stowhaven {

// Holds delayed blocks on a thread of its own and hands each to its queue when its time
// comes. Blocks due at the same moment are handed over in the order they were scheduled.
class DispatchTimer {
public:
    // Never destroyed, like the queues it feeds; at exit it drops what is still waiting.
    static DispatchTimer& shared();

    DispatchTimer();
    DispatchTimer(const DispatchTimer&) = delete;
    DispatchTimer& operator=(const DispatchTimer&) = delete;
    ~DispatchTimer();

    // The queue must outlive the timer or the delay, whichever ends first.
    void schedule(std::chrono::duration<double> delay, Queue& queue, Block block);

    // Drops the blocks still waiting and ends the thread. Blocks scheduled afterwards are
    // dropped.
    void shutdown();

private:
    struct Delayed {
        Queue* queue;
        Block block;
    };
    using Clock = std::chrono::steady_clock;

    void serve();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::multimap<Clock::time_point, Delayed> waiting_;
    bool shutDown_ = false;
    std::thread thread_;
};

// Runs the block on the queue once the delay has passed; never before.
void dispatchAfter(std::chrono::duration<double> delay, Queue& queue, Block block);

}  // namespace stowhaven
