#include "platform/dispatch/NotificationCenter.h"

#include "platform/dispatch/ConcurrentQueue.h"
#include "platform/dispatch/MainQueue.h"
#include "platform/dispatch/Semaphore.h"
#include "unit/dispatch/DispatchTestHelpers.h"

#include <gtest/gtest.h>

#include <any>
#include <atomic>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace stowhaven {
namespace {

using namespace std::chrono_literals;
using test::kFailureGuard;
using test::RecordingQueue;
using Heard = std::vector<std::string>;

TEST(NotificationCenterTest, WithoutAQueueObserversOfTheNameRunOnThePosterBeforePostReturns) {
    NotificationCenter center;
    Heard heard;
    std::thread::id ranOn;
    center.addObserver("UPDATE_PROGRESS_TEXT", nullptr, [&](const Notification& notification) {
        heard.push_back(std::any_cast<std::string>(notification.object));
        ranOn = std::this_thread::get_id();
    });
    center.addObserver("RESTORE_DONE", nullptr, [&](const Notification&) { heard.push_back("other name"); });
    center.addObserver("UPDATE_PROGRESS_TEXT", nullptr, [&](const Notification&) { heard.push_back("second"); });

    std::thread::id poster;
    Heard heardWhenPostReturned;
    std::thread([&] {
        poster = std::this_thread::get_id();
        center.post("UPDATE_PROGRESS_TEXT", std::string("Archiving..."));
        heardWhenPostReturned = heard;
    }).join();

    EXPECT_EQ(heardWhenPostReturned, (Heard{"Archiving...", "second"}));
    EXPECT_EQ(ranOn, poster);
}

TEST(NotificationCenterTest, OnAQueueTheBlockRunsWhenThatQueueServesIt) {
    NotificationCenter center;
    RecordingQueue queue;
    std::optional<double> progress;
    center.addObserver("UPDATE_PROGRESS", &queue, [&](const Notification& notification) {
        progress = std::any_cast<double>(notification.object);
    });

    center.post("UPDATE_PROGRESS", 0.5);
    EXPECT_FALSE(progress);
    queue.runAll();
    EXPECT_EQ(progress, 0.5);

    auto& mainQueue = MainQueue::shared();
    mainQueue.bindToCurrentThread();
    std::optional<std::thread::id> ranOn;
    center.addObserver("DATA_LOADED", &mainQueue, [&](const Notification& notification) {
        EXPECT_FALSE(notification.object.has_value());
        ranOn = std::this_thread::get_id();
    });
    std::thread([&] { center.post("DATA_LOADED"); }).join();
    ASSERT_TRUE(mainQueue.runUntil([&] { return ranOn.has_value(); }, kFailureGuard));
    EXPECT_EQ(ranOn, std::this_thread::get_id());
}

TEST(NotificationCenterTest, ARemovedObserverHearsNothingMoreNotEvenWhatWasAlreadyOnItsQueue) {
    NotificationCenter center;
    RecordingQueue queue;
    int heardOnQueue = 0;
    int heardAtOnce = 0;
    const auto queued = center.addObserver("OPERATION_CANCELED", &queue, [&](const Notification&) { ++heardOnQueue; });
    const auto direct = center.addObserver("OPERATION_CANCELED", nullptr, [&](const Notification&) { ++heardAtOnce; });

    center.post("OPERATION_CANCELED");
    center.removeObserver(queued);
    center.removeObserver(direct);
    center.removeObserver(direct);
    center.post("OPERATION_CANCELED");
    queue.runAll();

    EXPECT_EQ(heardOnQueue, 0);
    EXPECT_EQ(heardAtOnce, 1);
}

TEST(NotificationCenterTest, RemovalWaitsForACallRunningOnAnotherThread) {
    NotificationCenter center;
    ConcurrentQueue queue(1);
    Semaphore entered, release;
    std::atomic<bool> callFinished = false;
    const auto token = center.addObserver("BACKUP_FAILED", &queue, [&](const Notification&) {
        entered.signal();
        release.wait(kFailureGuard);
        callFinished = true;
    });
    center.post("BACKUP_FAILED");
    ASSERT_TRUE(entered.wait(kFailureGuard));

    bool finishedWhenRemoved = false;
    std::thread remover([&] {
        center.removeObserver(token);
        finishedWhenRemoved = callFinished;
    });
    std::this_thread::sleep_for(20ms);  // lets the removal start before the call may end
    release.signal();
    remover.join();
    EXPECT_TRUE(finishedWhenRemoved);
}

TEST(NotificationCenterTest, BlocksMayPostAddAndRemoveObservers) {
    NotificationCenter center;
    Heard heard;
    NotificationCenter::ObserverToken self{};
    NotificationCenter::ObserverToken later{};
    self = center.addObserver("BACKUP_SUCCEEDED", nullptr, [&](const Notification&) {
        heard.push_back("self");
        center.post("UPDATE_PROGRESS");
        center.addObserver("BACKUP_SUCCEEDED", nullptr, [&](const Notification&) { heard.push_back("added"); });
        center.removeObserver(later);
        center.removeObserver(self);
    });
    later = center.addObserver("BACKUP_SUCCEEDED", nullptr, [&](const Notification&) { heard.push_back("later"); });
    center.addObserver("UPDATE_PROGRESS", nullptr, [&](const Notification&) { heard.push_back("progress"); });

    center.post("BACKUP_SUCCEEDED");
    center.post("BACKUP_SUCCEEDED");
    EXPECT_EQ(heard, (Heard{"self", "progress", "added"}));
}

}  // namespace
}  // namespace stowhaven
