#pragma once

#include "platform/dispatch/ConcurrentQueue.h"

namespace stowhaven {

// The process-wide concurrent queues, one per priority, where loads, sweeps and other
// background work run. The priority only chooses the queue; all threads run alike.
class GlobalQueue {
public:
    enum class Priority { High, Default, Background };

    // The queues are never destroyed, so that blocks still running at exit can reach them;
    // at exit they drop what has not started and wait for what is running.
    static ConcurrentQueue& get(Priority priority);
    // Shuts every global queue down, as at exit: what has not started is dropped, what runs
    // is waited for, and blocks sent afterwards are dropped.
    static void shutdownAll();

    GlobalQueue() = delete;
};

}  // namespace stowhaven
