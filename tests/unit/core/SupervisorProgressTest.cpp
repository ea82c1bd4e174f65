#include "core/Supervisor.h"
#include "platform/dispatch/GlobalQueue.h"
#include "platform/dispatch/MainQueue.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

#include <any>
#include <chrono>

namespace stowhaven {
namespace {

struct Delivery {
    std::string name;
    std::any object;
    bool onMainThread = false;
    bool mainQueueHadTurned = false;
};

class SupervisorProgressTest : public ::testing::Test {
protected:
    SupervisorProgressTest() {
        for (const char* name : {"UPDATE_PROGRESS_TEXT", "UPDATE_PROGRESS"}) {
            observers_.push_back(center_.addObserver(name, nullptr, [this](const Notification& notification) {
                deliveries_.push_back(
                    {notification.name, notification.object, MainQueue::shared().isMainThread(), mainQueueTurned_});
                // A block sent now runs only if the main queue turns before the next post.
                if (notification.name == "UPDATE_PROGRESS_TEXT") {
                    MainQueue::shared().async([this] { mainQueueTurned_ = true; });
                }
            }));
        }
    }
    ~SupervisorProgressTest() override {
        scope_.serveMainQueue();
        for (const auto observer : observers_) center_.removeObserver(observer);
    }

    // Sends the step from a background thread, as jobs do, and serves the main queue until
    // both notifications have come.
    void notifyFromAJob(std::optional<double> progress, std::optional<std::string> message) {
        GlobalQueue::get(GlobalQueue::Priority::Default).async([this, progress, message] {
            supervisor_.notifyProgress(progress, message);
        });
        ASSERT_TRUE(MainQueue::shared().runUntil([this] { return deliveries_.size() >= 2; }, std::chrono::seconds(10)));
    }

    test::SupervisorScope scope_;
    Supervisor& supervisor_ = scope_.supervisor();
    NotificationCenter& center_ = NotificationCenter::defaultCenter();
    std::vector<NotificationCenter::ObserverToken> observers_;
    std::vector<Delivery> deliveries_;
    bool mainQueueTurned_ = false;
};

TEST_F(SupervisorProgressTest, AStepArrivesOnTheMainThreadAsTextThenFractionAndWhatItLeavesOutArrivesEmpty) {
    notifyFromAJob(0.25, "Archiving");

    ASSERT_EQ(deliveries_.size(), 2u);
    EXPECT_EQ(deliveries_[0].name, "UPDATE_PROGRESS_TEXT");
    EXPECT_EQ(std::any_cast<std::string>(deliveries_[0].object), "Archiving");
    EXPECT_EQ(deliveries_[1].name, "UPDATE_PROGRESS");
    EXPECT_EQ(std::any_cast<double>(deliveries_[1].object), 0.25);
    EXPECT_TRUE(deliveries_[0].onMainThread && deliveries_[1].onMainThread);
    EXPECT_TRUE(deliveries_[1].mainQueueHadTurned);
    EXPECT_EQ(supervisor_.progressMessage(), "Archiving");

    deliveries_.clear();
    notifyFromAJob(std::nullopt, std::nullopt);
    ASSERT_EQ(deliveries_.size(), 2u);
    EXPECT_FALSE(deliveries_[0].object.has_value());
    EXPECT_FALSE(deliveries_[1].object.has_value());
    EXPECT_EQ(supervisor_.progressMessage(), std::nullopt) << "the last text is cleared";
}

TEST_F(SupervisorProgressTest, TheActivityIndicatorShowsOnceAndTakesNewTextsUntilDismissed) {
    const auto& display = *scope_.screens.progress;
    supervisor_.showActivityIndicatorViewWithMessage("Loading", true);
    EXPECT_FALSE(display.active);
    scope_.serveMainQueue();
    EXPECT_TRUE(display.active);
    EXPECT_EQ(display.label, "Loading");
    EXPECT_EQ(display.details, "Please wait or cancel");

    supervisor_.showActivityIndicatorViewWithMessage("Refreshing", false);
    scope_.serveMainQueue();
    EXPECT_EQ(display.shows, 1);
    EXPECT_EQ(display.label, "Refreshing");
    EXPECT_EQ(display.details, "Please wait");

    supervisor_.dismissActivityIndicatorView();
    scope_.serveMainQueue();
    EXPECT_FALSE(display.active);
}

}  // namespace
}  // namespace stowhaven
