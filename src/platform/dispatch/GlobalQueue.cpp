#include "platform/dispatch/GlobalQueue.h"

#include <array>
#include <cstddef>
#include <cstdlib>

namespace stowhaven {

namespace {

constexpr std::size_t kThreadsPerQueue = 8;

using Queues = std::array<ConcurrentQueue, 3>;

Queues& queues() {
    static auto* const made = [] {
        auto* all = new Queues{ConcurrentQueue(kThreadsPerQueue), ConcurrentQueue(kThreadsPerQueue),
                               ConcurrentQueue(kThreadsPerQueue)};
        std::atexit(GlobalQueue::shutdownAll);
        return all;
    }();
    return *made;
}

}  // namespace

ConcurrentQueue& GlobalQueue::get(Priority priority) { return queues()[static_cast<std::size_t>(priority)]; }

void GlobalQueue::shutdownAll() {
    for (auto& queue : queues()) queue.shutdown();
}

}  // namespace stowhaven
