#pragma once

#include "platform/dispatch/MainQueue.h"
#include "storage/StorageHelperProtocol.h"

#include <chrono>
#include <functional>
#include <memory>

namespace stowhaven::test {

// Which hook ended a request, and what the success hook was handed.
struct RequestOutcome {
    bool succeeded = false;
    bool failed = false;
    HookObject object;
};

// Sets the hooks, runs the request on the test's thread, and serves the main queue, where
// retries run, until a hook has run or PATIENCE is over.
inline RequestOutcome request(StorageHelperProtocol& engine, const std::function<void()>& operation,
                              std::chrono::duration<double> patience = std::chrono::seconds(0)) {
    auto outcome = std::make_shared<RequestOutcome>();
    engine.setSuccessSelector(
        [outcome](const HookObject& object) {
            outcome->succeeded = true;
            outcome->object = object;
        },
        [outcome] { outcome->failed = true; });
    operation();
    MainQueue::shared().runUntil([&] { return outcome->succeeded || outcome->failed; }, patience);
    return *outcome;
}

}  // namespace stowhaven::test
