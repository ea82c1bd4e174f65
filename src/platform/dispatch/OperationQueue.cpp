#include "platform/dispatch/OperationQueue.h"

#include "platform/dispatch/BlockOperation.h"

#include <algorithm>
#include <utility>

namespace stowhaven {

OperationQueue::OperationQueue() : thread_([this] { serve(); }) {}

OperationQueue::~OperationQueue() {
    cancelAllOperations();
    setSuspended(false);
    waitUntilAllOperationsAreFinished();
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

void OperationQueue::addOperation(std::shared_ptr<Operation> operation) {
    addOperations({std::move(operation)}, false);
}

void OperationQueue::addOperation(Block block) { addOperation(std::make_shared<BlockOperation>(std::move(block))); }

void OperationQueue::addOperations(const std::vector<std::shared_ptr<Operation>>& operations, bool waitUntilFinished) {
    std::unique_lock lock(mutex_);
    for (const auto& operation : operations) {
        if (operation) held_.push_back(operation);
    }
    changed_.notify_all();
    if (!waitUntilFinished) return;
    changed_.wait(lock, [&] {
        return std::ranges::none_of(
            operations, [this](const auto& operation) { return std::ranges::find(held_, operation) != held_.end(); });
    });
}

std::size_t OperationQueue::operationCount() const {
    std::lock_guard lock(mutex_);
    return held_.size();
}

void OperationQueue::cancelAllOperations() {
    std::lock_guard lock(mutex_);
    for (const auto& operation : held_) operation->cancel();
}

void OperationQueue::waitUntilAllOperationsAreFinished() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return held_.empty(); });
}

void OperationQueue::setSuspended(bool suspended) {
    {
        std::lock_guard lock(mutex_);
        suspended_ = suspended;
    }
    changed_.notify_all();
}

void OperationQueue::serve() {
    // Each turn drops its reference after the lock, as the last one may take the operation
    // and its destructor may use the queue.
    while (const auto operation = waitForNext()) {
        operation->start();
        {
            std::lock_guard lock(mutex_);
            held_.pop_front();
        }
        changed_.notify_all();
    }
}

std::shared_ptr<Operation> OperationQueue::waitForNext() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return stopping_ || (!suspended_ && !held_.empty()); });
    if (stopping_) return nullptr;
    // Only serve() removes operations, so the front stays the one started until it is done.
    return held_.front();
}

}  // namespace stowhaven
