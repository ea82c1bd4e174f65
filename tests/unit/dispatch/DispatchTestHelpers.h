#pragma once

#include "platform/dispatch/Queue.h"
#include "support/Eventually.h"

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

namespace stowhaven::test {

// A queue that keeps the blocks it is sent until the test runs them, so that a test can
// see where a block landed and when.
class RecordingQueue final : public Queue {
public:
    void async(Block block) override {
        std::lock_guard lock(mutex_);
        blocks_.push_back(std::move(block));
    }

    std::size_t pendingCount() {
        std::lock_guard lock(mutex_);
        return blocks_.size();
    }

    // Runs what it holds on the calling thread, in the order it arrived.
    void runAll() {
        std::deque<Block> blocks;
        {
            std::lock_guard lock(mutex_);
            blocks.swap(blocks_);
        }
        for (auto& block : blocks) block();
    }

private:
    std::mutex mutex_;
    std::deque<Block> blocks_;
};

}  // namespace stowhaven::test
