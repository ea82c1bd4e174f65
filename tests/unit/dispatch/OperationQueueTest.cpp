#include "platform/dispatch/OperationQueue.h"

#include "platform/dispatch/Semaphore.h"
#include "unit/dispatch/DispatchTestHelpers.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace stowhaven {
namespace {

using test::eventually;
using test::kFailureGuard;
using Entries = std::vector<std::string>;

// What the operations of a test did, and on which threads.
class Journal {
public:
    void record(const std::string& entry) {
        std::lock_guard lock(mutex_);
        entries_.push_back(entry);
        threads_.insert(std::this_thread::get_id());
    }
    Entries entries() const {
        std::lock_guard lock(mutex_);
        return entries_;
    }
    std::set<std::thread::id> threads() const {
        std::lock_guard lock(mutex_);
        return threads_;
    }

private:
    mutable std::mutex mutex_;
    Entries entries_;
    std::set<std::thread::id> threads_;
};

class JournaledOperation : public Operation {
public:
    JournaledOperation(std::string name, Journal& journal, std::function<void(Operation&)> work = {})
        : journal_(journal), work_(std::move(work)) {
        setName(std::move(name));
    }

    void main() override {
        journal_.record(name() + " starts");
        if (work_) work_(*this);
        std::this_thread::yield();  // gives an operation wrongly running beside this one a chance to show
        journal_.record(name() + " ends");
    }

private:
    Journal& journal_;
    std::function<void(Operation&)> work_;
};

// Work that signals its start and goes on until the operation is canceled.
std::function<void(Operation&)> runUntilCanceled(Semaphore& started) {
    return [&started](Operation& self) {
        started.signal();
        eventually([&] { return self.isCanceled(); });
    };
}

TEST(OperationQueueTest, RunsOperationsOneAtATimeInOrderOnAThreadOfItsOwn) {
    Journal journal;
    OperationQueue queue;
    for (const char* name : {"a", "b"}) queue.addOperation(std::make_shared<JournaledOperation>(name, journal));
    queue.addOperation([&] { journal.record("block"); });
    queue.waitUntilAllOperationsAreFinished();

    EXPECT_EQ(journal.entries(), (Entries{"a starts", "a ends", "b starts", "b ends", "block"}));
    ASSERT_EQ(journal.threads().size(), 1u);
    EXPECT_NE(*journal.threads().begin(), std::this_thread::get_id());
    EXPECT_EQ(queue.operationCount(), 0u);
}

TEST(OperationQueueTest, ACanceledOperationThatHasNotStartedFinishesWithoutItsMain) {
    Journal journal;
    OperationQueue queue;
    queue.setSuspended(true);
    const auto canceled = std::make_shared<JournaledOperation>("canceled", journal);
    canceled->setCompletionBlock([&] { journal.record("completion"); });
    queue.addOperation(canceled);
    queue.addOperation(std::make_shared<JournaledOperation>("kept", journal));

    canceled->cancel();
    queue.setSuspended(false);
    queue.waitUntilAllOperationsAreFinished();

    EXPECT_EQ(journal.entries(), (Entries{"completion", "kept starts", "kept ends"}));
    EXPECT_TRUE(canceled->isFinished());
}

// Canceling all, or destroying the queue, reaches the running operation, skips the others
// and waits for the running one.
TEST(OperationQueueTest, CancelingAllReachesTheRunningOperationAndSkipsTheOthers) {
    for (const bool destroy : {false, true}) {
        SCOPED_TRACE(destroy ? "destroyed" : "canceled");
        Journal journal;
        Semaphore started;
        const auto running = std::make_shared<JournaledOperation>("running", journal, runUntilCanceled(started));
        const auto waiting = std::make_shared<JournaledOperation>("waiting", journal);
        {
            OperationQueue queue;
            queue.addOperations({running, waiting}, false);
            ASSERT_TRUE(started.wait(kFailureGuard));
            if (!destroy) {
                queue.cancelAllOperations();
                queue.waitUntilAllOperationsAreFinished();
            }
        }
        EXPECT_EQ(journal.entries(), (Entries{"running starts", "running ends"}));
        EXPECT_TRUE(running->isFinished() && waiting->isFinished());
    }
}

TEST(OperationTest, TheCompletionBlockRunsOnceAfterMainAndIsThenReleased) {
    Journal journal;
    auto operation = std::make_shared<JournaledOperation>("op", journal);
    // Holding the operation in its own completion block would leak it if the block were kept.
    operation->setCompletionBlock([&journal, operation] { journal.record("completion"); });
    const std::weak_ptr<Operation> watched = operation;

    operation->start();
    operation->start();
    EXPECT_EQ(journal.entries(), (Entries{"op starts", "op ends", "completion"}));
    EXPECT_TRUE(operation->isFinished());
    operation.reset();
    EXPECT_TRUE(watched.expired());
}

}  // namespace
}  // namespace stowhaven
