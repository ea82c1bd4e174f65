#pragma once

#include "platform/dispatch/Queue.h"

#include <atomic>
#include <mutex>
#include <string>

namespace stowhaven {

// One step of work that an OperationQueue runs: a backup, a restore, one kind of data.
// Subclasses put the work in main() and poll isCanceled() between their steps; a cancel
// never interrupts main() by itself.
class Operation {
public:
    Operation() = default;
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;
    virtual ~Operation() = default;

    virtual void main() = 0;

    // Runs the operation on the calling thread, once: main() unless it was canceled
    // before, then the completion block. Later calls do nothing.
    void start();

    // Safe from any thread, at any time.
    void cancel();
    bool isCanceled() const;
    bool isFinished() const;

    // Runs on the operation's thread right after main() has ended or been skipped, and is
    // released after running, so it may hold the operation itself.
    void setCompletionBlock(Block block);
    void setName(std::string name);
    std::string name() const;

private:
    enum class State { Ready, Executing, Finished };

    std::atomic<State> state_ = State::Ready;
    std::atomic<bool> canceled_ = false;
    mutable std::mutex mutex_;
    Block completionBlock_;
    std::string name_;
};

}  // namespace stowhaven
