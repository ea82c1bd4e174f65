#pragma once

#include <mutex>
#include <utility>

namespace stowhaven {

// A value shared between threads together with the lock that guards it, so that each walk
// or change happens under the lock of that value. The lock is recursive: code that holds
// it may call code that takes it again.
template <typename Value>
class Monitored {
public:
    Monitored() = default;
    explicit Monitored(Value value) : value_(std::move(value)) {}
    Monitored(const Monitored&) = delete;
    Monitored& operator=(const Monitored&) = delete;

    // Runs WORK on the value under its lock and answers what WORK answers.
    template <typename Work>
    decltype(auto) with(Work&& work) {
        std::lock_guard lock(mutex_);
        return std::forward<Work>(work)(value_);
    }
    template <typename Work>
    decltype(auto) with(Work&& work) const {
        std::lock_guard lock(mutex_);
        return std::forward<Work>(work)(std::as_const(value_));
    }

    // A copy taken under the lock, to walk without holding it.
    Value copy() const {
        std::lock_guard lock(mutex_);
        return value_;
    }
    void set(Value value) {
        std::lock_guard lock(mutex_);
        value_ = std::move(value);
    }

private:
    mutable std::recursive_mutex mutex_;
    Value value_{};
};

}  // namespace stowhaven
