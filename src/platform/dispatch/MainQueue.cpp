#include "platform/dispatch/MainQueue.h"

#include "platform/Log.h"

#include <algorithm>
#include <future>
#include <memory>

namespace stowhaven {

namespace {

// How often runUntil() looks at its predicate while no block arrives.
constexpr auto kPredicateRecheck = std::chrono::milliseconds(5);

}  // namespace

MainQueue& MainQueue::shared() {
    static auto* const queue = new MainQueue;
    return *queue;
}

void MainQueue::bindToCurrentThread() {
    mainThread_ = std::this_thread::get_id();
}

bool MainQueue::isMainThread() const {
    return mainThread_.load() == std::this_thread::get_id();
}

void MainQueue::async(Block block) {
    {
        std::lock_guard lock(mutex_);
        pending_.emplace_back(nextSequence_++, std::move(block));
    }
    changed_.notify_all();
}

void MainQueue::sync(Block block) {
    if (isMainThread()) {
        block();
        return;
    }
    auto task = std::make_shared<std::packaged_task<void()>>(std::move(block));
    auto ran = task->get_future();
    async([task] { (*task)(); });
    ran.get();
}

void MainQueue::run() {
    if (!servesHere("run")) return;
    while (true) {
        Block block;
        {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [this] { return stopRequested_ || !pending_.empty(); });
            if (std::exchange(stopRequested_, false)) return;
            block = popOldest();
        }
        block();
    }
}

void MainQueue::stop() {
    {
        std::lock_guard lock(mutex_);
        stopRequested_ = true;
    }
    changed_.notify_all();
}

std::size_t MainQueue::runOnce() {
    if (!isMainThread()) return 0;
    std::uint64_t sequenceLimit = 0;
    {
        std::lock_guard lock(mutex_);
        sequenceLimit = nextSequence_;
    }
    std::size_t ran = 0;
    // A block may turn the loop itself; the blocks that nested turn runs are not run twice.
    while (Block block = takeSentBefore(sequenceLimit)) {
        block();
        ++ran;
    }
    return ran;
}

bool MainQueue::runUntil(const std::function<bool()>& predicate, std::chrono::duration<double> timeout) {
    if (!servesHere("runUntil")) return predicate();
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::duration_cast<std::chrono::steady_clock::duration>(timeout);
    while (!predicate()) {
        const auto now = std::chrono::steady_clock::now();
        if (now >= deadline) return false;
        Block block;
        {
            std::unique_lock lock(mutex_);
            const auto wakeUp = std::min(deadline, now + kPredicateRecheck);
            if (changed_.wait_until(lock, wakeUp, [this] { return !pending_.empty(); })) block = popOldest();
        }
        if (block) block();
    }
    return true;
}

bool MainQueue::servesHere(const char* call) const {
    if (isMainThread()) return true;
    SH_LOG("{} called off the main thread; nothing served", call);
    return false;
}

Block MainQueue::takeSentBefore(std::uint64_t sequenceLimit) {
    std::lock_guard lock(mutex_);
    if (pending_.empty() || pending_.front().first >= sequenceLimit) return {};
    return popOldest();
}

Block MainQueue::popOldest() {
    Block block = std::move(pending_.front().second);
    pending_.pop_front();
    return block;
}

}  // namespace stowhaven
