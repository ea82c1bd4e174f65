#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace stowhaven::test {

// How long a test waits for something that should happen before calling it a failure.
inline constexpr std::chrono::seconds kFailureGuard{10};

// Waits, polling, until the condition holds; answers false if the guard runs out first.
inline bool eventually(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + kFailureGuard;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace stowhaven::test
