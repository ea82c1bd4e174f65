#include "platform/dispatch/ConcurrentQueue.h"

#include <utility>

namespace stowhaven {

ConcurrentQueue::ConcurrentQueue(std::size_t maxThreads) : maxThreads_(maxThreads) {}

ConcurrentQueue::~ConcurrentQueue() {
    shutdown();
}

void ConcurrentQueue::async(Block block) {
    std::unique_lock lock(mutex_);
    if (shutDown_) {
        lock.unlock();
        return;  // the block and its captures go here, outside the lock
    }
    pending_.push_back(std::move(block));
    // Each idle thread takes one pending block; the blocks beyond those need new threads.
    if (pending_.size() > idleThreads_ && threads_.size() < maxThreads_) {
        threads_.emplace_back([this] { serve(); });
    }
    workArrived_.notify_one();
}

void ConcurrentQueue::shutdown() {
    std::deque<Block> dropped;
    std::vector<std::thread> threads;
    {
        std::lock_guard lock(mutex_);
        shutDown_ = true;
        dropped.swap(pending_);
        threads.swap(threads_);
    }
    workArrived_.notify_all();
    dropped.clear();
    for (auto& thread : threads) {
        // A block that ends the process runs the exit hooks on its own thread.
        if (thread.get_id() == std::this_thread::get_id()) {
            thread.detach();
        } else {
            thread.join();
        }
    }
}

void ConcurrentQueue::serve() {
    while (true) {
        Block block;
        {
            std::unique_lock lock(mutex_);
            ++idleThreads_;
            workArrived_.wait(lock, [this] { return shutDown_ || !pending_.empty(); });
            --idleThreads_;
            if (shutDown_) return;
            block = std::move(pending_.front());
            pending_.pop_front();
        }
        block();
    }
}

}  // namespace stowhaven
