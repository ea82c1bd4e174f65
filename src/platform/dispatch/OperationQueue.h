#pragma once

#include "platform/dispatch/Operation.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace stowhaven {

// A serial operation queue: its operations run one at a time, in the order they were
// added, on a thread of the queue's own. The queue holds an operation from its adding
// until it has finished and its completion block has run; a canceled operation that has
// not started still takes its turn, and is finished then without running main().
class OperationQueue {
public:
    OperationQueue();
    OperationQueue(const OperationQueue&) = delete;
    OperationQueue& operator=(const OperationQueue&) = delete;
    // Cancels what the queue holds and waits for the running operation to return.
    // Must not run on the queue's own thread.
    ~OperationQueue();

    void addOperation(std::shared_ptr<Operation> operation);
    void addOperation(Block block);
    // With waitUntilFinished, returns once the queue no longer holds any of them.
    void addOperations(const std::vector<std::shared_ptr<Operation>>& operations, bool waitUntilFinished);

    // How many operations the queue holds, the running one included.
    std::size_t operationCount() const;

    // Cancels every operation held, the running one included, which sees it through
    // isCanceled().
    void cancelAllOperations();
    // Returns once the queue holds nothing. Never returns while the queue is suspended
    // with operations in it, nor when called from one of its operations.
    void waitUntilAllOperationsAreFinished();

    // A suspended queue starts no operation; the running one goes on.
    void setSuspended(bool suspended);

private:
    void serve();
    // The next operation to start, or nullptr once the queue is stopping.
    std::shared_ptr<Operation> waitForNext();

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::shared_ptr<Operation>> held_;
    bool suspended_ = false;
    bool stopping_ = false;
    std::thread thread_;
};

}  // namespace stowhaven
