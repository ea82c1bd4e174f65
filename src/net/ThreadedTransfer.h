#pragma once

#include "net/TransferProgress.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace stowhaven {

// How a transfer ended.
struct TransferOutcome {
    bool succeeded = false;
    std::string error;
};

// A transfer that runs a blocking job on a thread of its own while the caller polls it:
// INTERFACE is the client's transfer class (Transfer), whose calls this answers.
// Going away aborts the job and waits for its end.
template <typename Interface>
class ThreadedTransfer final : public Interface {
public:
    using Job = std::function<TransferOutcome(TransferProgress& progress)>;

    explicit ThreadedTransfer(Job job) : thread_([this, job = std::move(job)] { finish(job(progress_)); }) {}
    // One that has failed with ERROR before it began.
    static std::unique_ptr<ThreadedTransfer> failed(std::string error) {
        return std::make_unique<ThreadedTransfer>([error = std::move(error)](TransferProgress&) {
            return TransferOutcome{false, error};
        });
    }
    ~ThreadedTransfer() override {
        abort();
        thread_.join();
    }

    bool waitUntilFinished(std::chrono::milliseconds timeout) override {
        std::unique_lock lock(mutex_);
        return finishedCondition_.wait_for(lock, timeout, [this] { return finished_; });
    }
    bool isFinished() const override {
        std::lock_guard lock(mutex_);
        return finished_;
    }
    bool succeeded() const override {
        std::lock_guard lock(mutex_);
        return finished_ && outcome_.succeeded;
    }
    std::int64_t bytesDone() const override { return progress_.bytesDone; }
    std::int64_t bytesExpected() const override { return progress_.bytesExpected; }
    double bytesPerSecond() const override { return progress_.bytesPerSecond; }
    void abort() override { progress_.abortRequested = true; }
    std::string error() const override {
        std::lock_guard lock(mutex_);
        return outcome_.error;
    }

private:
    void finish(TransferOutcome outcome) {
        {
            std::lock_guard lock(mutex_);
            outcome_ = std::move(outcome);
            finished_ = true;
        }
        finishedCondition_.notify_all();
    }

    TransferProgress progress_;
    mutable std::mutex mutex_;
    std::condition_variable finishedCondition_;
    bool finished_ = false;
    TransferOutcome outcome_;
    // Last, so that everything the job touches exists before it starts.
    std::thread thread_;
};

}  // namespace stowhaven
