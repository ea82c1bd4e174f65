#pragma once

#include <functional>

namespace stowhaven {

// A unit of work handed to a queue.
using Block = std::function<void()>;

// Somewhere blocks can be sent to run later: the main queue, a global queue. APIs that
// deliver work "on the queue asked for" take one of these.
class Queue {
public:
    virtual ~Queue() = default;

    // Returns at once; the block runs later on one of the queue's threads. A queue that
    // has shut down drops it.
    virtual void async(Block block) = 0;
};

}  // namespace stowhaven
