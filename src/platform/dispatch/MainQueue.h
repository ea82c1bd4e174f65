#pragma once

#include "platform/dispatch/Queue.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

namespace stowhaven {

// The queue of the main thread, which serves screens, alerts and progress. It has no
// thread of its own: the thread that called bindToCurrentThread() serves it from run(),
// runOnce() or runUntil(). Blocks run one at a time, in the order they were sent.
class MainQueue final : public Queue {
public:
    // Lives as long as the process, so that blocks still running at exit can reach it.
    static MainQueue& shared();

    // Makes the calling thread the main thread: the program's main() calls it first, and
    // so does each test that needs a main thread.
    void bindToCurrentThread();
    bool isMainThread() const;

    void async(Block block) override;
    // Runs the block on the main thread and returns once it has run. On the main thread
    // it runs at once, inline; elsewhere it waits until the main thread serves it.
    void sync(Block block);

    // Serves blocks, waiting for more, until stop() is called. A stop() that comes while
    // no run() is going ends the next one at once. Off the main thread it logs and returns.
    void run();
    void stop();
    // Lets the loop turn once: runs the blocks that were pending when it was called, and
    // not those they send in turn. Never waits. Answers how many blocks it ran. Off the
    // main thread it does nothing, as that thread's own loop has nothing to serve.
    std::size_t runOnce();
    // Serves blocks until the predicate holds or the timeout runs out, and answers the
    // predicate. The predicate is tested after each block and at least every few
    // milliseconds, so it may watch state that other threads change. Off the main thread
    // it logs and answers the predicate at once.
    bool runUntil(const std::function<bool()>& predicate, std::chrono::duration<double> timeout);

private:
    MainQueue() = default;

    bool servesHere(const char* call) const;
    // The oldest pending block if it was sent before `sequenceLimit`, else an empty one.
    Block takeSentBefore(std::uint64_t sequenceLimit);
    // Callers hold mutex_ and know that a block is pending.
    Block popOldest();

    std::atomic<std::thread::id> mainThread_;
    std::mutex mutex_;
    std::condition_variable changed_;
    // Each block with the sequence number of its sending, so that a turn can tell the
    // blocks that were already pending from those sent during it.
    std::deque<std::pair<std::uint64_t, Block>> pending_;
    std::uint64_t nextSequence_ = 0;
    bool stopRequested_ = false;
};

}  // namespace stowhaven
