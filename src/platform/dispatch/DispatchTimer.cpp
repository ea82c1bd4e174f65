#include "platform/dispatch/DispatchTimer.h"

#include <cstdlib>
#include <utility>

namespace stowhaven {

DispatchTimer& DispatchTimer::shared() {
    static auto* const timer = [] {
        auto* made = new DispatchTimer;
        std::atexit([] { shared().shutdown(); });
        return made;
    }();
    return *timer;
}

DispatchTimer::DispatchTimer() : thread_([this] { serve(); }) {}

DispatchTimer::~DispatchTimer() {
    shutdown();
}

void DispatchTimer::schedule(std::chrono::duration<double> delay, Queue& queue, Block block) {
    const auto due = Clock::now() + std::chrono::duration_cast<Clock::duration>(delay);
    std::unique_lock lock(mutex_);
    if (shutDown_) {
        lock.unlock();
        return;  // the block and its captures go here, outside the lock
    }
    waiting_.emplace(due, Delayed{&queue, std::move(block)});
    changed_.notify_one();
}

void DispatchTimer::shutdown() {
    std::multimap<Clock::time_point, Delayed> dropped;
    std::thread thread;
    {
        std::lock_guard lock(mutex_);
        shutDown_ = true;
        dropped.swap(waiting_);
        thread.swap(thread_);
    }
    changed_.notify_one();
    if (thread.joinable()) thread.join();
}

void DispatchTimer::serve() {
    std::unique_lock lock(mutex_);
    while (!shutDown_) {
        if (waiting_.empty()) {
            changed_.wait(lock);
        } else if (const auto due = waiting_.begin()->first; Clock::now() < due) {
            changed_.wait_until(lock, due);
        } else {
            auto delayed = std::move(waiting_.extract(waiting_.begin()).mapped());
            lock.unlock();
            delayed.queue->async(std::move(delayed.block));
            lock.lock();
        }
    }
}

void dispatchAfter(std::chrono::duration<double> delay, Queue& queue, Block block) {
    DispatchTimer::shared().schedule(delay, queue, std::move(block));
}

}  // namespace stowhaven
