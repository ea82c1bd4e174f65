#include "platform/dispatch/Operation.h"

#include <utility>

namespace stowhaven {

void Operation::start() {
    auto expected = State::Ready;
    if (!state_.compare_exchange_strong(expected, State::Executing)) return;
    if (!isCanceled()) main();
    state_ = State::Finished;
    Block completion;
    {
        std::lock_guard lock(mutex_);
        completion.swap(completionBlock_);
    }
    if (completion) completion();
}

void Operation::cancel() { canceled_ = true; }

bool Operation::isCanceled() const { return canceled_; }

bool Operation::isFinished() const { return state_ == State::Finished; }

void Operation::setCompletionBlock(Block block) {
    std::lock_guard lock(mutex_);
    completionBlock_.swap(block);
}  // the block replaced goes here, after the lock

void Operation::setName(std::string name) {
    std::lock_guard lock(mutex_);
    name_ = std::move(name);
}

std::string Operation::name() const {
    std::lock_guard lock(mutex_);
    return name_;
}

}  // namespace stowhaven
