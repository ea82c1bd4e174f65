#include "support/OperationRun.h"

#include "platform/dispatch/MainQueue.h"
#include "platform/dispatch/OperationQueue.h"

#include <chrono>

namespace stowhaven {

namespace {

// No job takes this long; one that does is left to end with the program.
constexpr std::chrono::hours kJobTimeout{48};

}  // namespace

void runOperation(std::shared_ptr<Operation> operation) {
    OperationQueue queue;
    queue.addOperation(std::move(operation));
    MainQueue& mainQueue = MainQueue::shared();
    mainQueue.runUntil([&queue] { return queue.operationCount() == 0; }, kJobTimeout);
    while (mainQueue.runOnce() > 0) {
    }
}

}  // namespace stowhaven
