// The hooks, retries and cancellation that every engine shares, on an engine whose one
// request fails as often as a test tells it to.

#include "platform/dispatch/DispatchTimer.h"
#include "platform/dispatch/MainQueue.h"
#include "platform/dispatch/NotificationCenter.h"
#include "storage/AbstractStorageHelper.h"
#include "support/NullStorageEngine.h"
#include "support/StorageRequest.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

#include <any>

namespace stowhaven {
namespace {

using namespace std::chrono_literals;

class TestWrapper final : public AbstractStorageWrapper {};

// Its upload fails the first `failures` times, then succeeds; it retries as network
// engines do. Device directories can be renamed, or refuse to be.
class ScriptedEngine final : public test::NullStorageEngine {
public:
    ScriptedEngine() : NullStorageEngine(std::make_unique<TestWrapper>()) {}

    void uploadFile(const std::string& path, Date date, const std::optional<std::string>& directory) override {
        if (retryCount() == 0) setRetrySelector([=, this] { uploadFile(path, date, directory); });
        ++attempts;
        wrapper()->setErrorMessage(std::nullopt);
        if (attempts <= failures) {
            wrapper()->setErrorMessage("The server went away");
            performFailureSelector();
        } else {
            performSuccessSelector(path);
        }
    }

    void moveFromPath(const std::string& from, const std::string& to) override {
        moves.emplace_back(from, to);
        wrapper()->setErrorMessage(refusesMoves ? std::optional<std::string>("Permission denied") : std::nullopt);
        if (refusesMoves) performFailureSelector();
    }

    void listDeviceDirectories(std::vector<std::string> names) {
        setAvailableDeviceBackups(std::move(names));
        migrateDeviceDirectory();
    }

    int failures = 0;
    int attempts = 0;
    bool refusesMoves = false;
    std::vector<std::pair<std::string, std::string>> moves;
};

class StorageContractTest : public ::testing::Test {
protected:
    StorageContractTest() {
        AbstractStorageHelper::setRetryDelayForTesting(1ms);
        progressObserver_ = NotificationCenter::defaultCenter().addObserver(
            "UPDATE_PROGRESS_TEXT", nullptr, [this](const Notification& notification) {
                if (const auto* text = std::any_cast<std::string>(&notification.object)) progress_.push_back(*text);
            });
    }
    ~StorageContractTest() override {
        NotificationCenter::defaultCenter().removeObserver(progressObserver_);
        AbstractStorageHelper::setRetryDelayForTesting(AbstractStorageHelper::kRetryDelay);
    }

    test::RequestOutcome upload(std::chrono::duration<double> patience = 2s) {
        return test::request(
            *engine_, [this] { engine_->uploadFile("/tmp/x", Date(1), "DEBS"); }, patience);
    }

    test::SupervisorScope scope_;
    // Made first, so that it hears the cancel notifications.
    Supervisor& supervisor_ = scope_.supervisor();
    std::shared_ptr<ScriptedEngine> engine_ = std::make_shared<ScriptedEngine>();
    std::vector<std::string> progress_;
    NotificationCenter::ObserverToken progressObserver_{};
};

TEST_F(StorageContractTest, AFailureIsTriedTenTimesMoreAndThenShownAndHooked) {
    engine_->failures = 100;
    const auto outcome = upload();
    EXPECT_TRUE(outcome.failed);
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_EQ(engine_->attempts, 11) << "the first attempt and ten retries";
    ASSERT_FALSE(progress_.empty());
    EXPECT_EQ(progress_.front(), "Retrying 1/10 in 5s...");
    EXPECT_EQ(progress_.back(), "Retrying 10/10 in 5s...");
    scope_.serveMainQueue();
    ASSERT_EQ(scope_.screens.alerts->alerts.size(), 1u) << "the error shows once, after the last retry";
    EXPECT_EQ(scope_.screens.alerts->alerts.front().message, "The server went away");
}

TEST_F(StorageContractTest, ARetryThatSucceedsRunsTheSuccessHookWithWhatItHands) {
    engine_->failures = 9;
    const auto outcome = upload();
    EXPECT_TRUE(outcome.succeeded);
    EXPECT_EQ(std::get<std::string>(outcome.object), "/tmp/x");
    EXPECT_EQ(progress_.back(), "Retrying 9/10 in 5s...");
    scope_.serveMainQueue();
    EXPECT_TRUE(scope_.screens.alerts->alerts.empty());
}

TEST_F(StorageContractTest, ACancelDuringTheWaitRunsNeitherHookNorTheRetry) {
    engine_->failures = 100;
    AbstractStorageHelper::setRetryDelayForTesting(50ms);
    auto outcome = std::make_shared<test::RequestOutcome>();
    engine_->setSuccessSelector([outcome](const HookObject&) { outcome->succeeded = true; },
                                [outcome] { outcome->failed = true; });
    engine_->uploadFile("/tmp/x", Date(1), "DEBS");
    NotificationCenter::defaultCenter().post("PROGRESS_CANCELED");
    // A block due after the retry reaches the main queue after it, and so runs after it.
    bool retryWasDue = false;
    dispatchAfter(60ms, MainQueue::shared(), [&retryWasDue] { retryWasDue = true; });
    MainQueue::shared().runUntil([&retryWasDue] { return retryWasDue; }, 5s);
    ASSERT_TRUE(retryWasDue);
    EXPECT_FALSE(outcome->succeeded);
    EXPECT_FALSE(outcome->failed);
    EXPECT_EQ(engine_->attempts, 1);
}

TEST_F(StorageContractTest, HooksAreClearedAsTheyAreReadSoThatAHookCanSetTheNextOnes) {
    std::vector<std::string> steps;
    engine_->setSuccessSelector(
        [&](const HookObject&) {
            steps.push_back("first done");
            engine_->setSuccessSelector([&](const HookObject&) { steps.push_back("second done"); }, nullptr);
        },
        nullptr);
    engine_->uploadFile("/tmp/a", Date(1), std::nullopt);
    engine_->uploadFile("/tmp/b", Date(1), std::nullopt);
    engine_->uploadFile("/tmp/c", Date(1), std::nullopt);
    EXPECT_EQ(steps, (std::vector<std::string>{"first done", "second done"})) << "one request, one hook";
}

TEST_F(StorageContractTest, AnOldDeviceDirectoryTakesTheDevicesNameWithoutRetriesOrHooks) {
    const std::string identifier = test::SupervisorScope::kPinnedDevice.uniqueIdentifier;
    const std::string name = test::SupervisorScope::kPinnedDevice.name;
    bool hooked = false;
    engine_->setSuccessSelector([&](const HookObject&) { hooked = true; }, [&] { hooked = true; });
    engine_->listDeviceDirectories({"Other iPad", identifier});
    EXPECT_EQ(engine_->moves, (std::vector<std::pair<std::string, std::string>>{{identifier, name}}));
    EXPECT_EQ(engine_->availableDeviceBackups(), (std::vector<std::string>{"Other iPad", name}));
    EXPECT_FALSE(hooked) << "the rename runs without the hooks of the request in hand";
    engine_->uploadFile("/tmp/x", Date(1), std::nullopt);
    EXPECT_TRUE(hooked) << "which are back afterwards";
}

TEST_F(StorageContractTest, AMigrationThatCantOrNeedntHappenLeavesTheDirectories) {
    const std::string identifier = test::SupervisorScope::kPinnedDevice.uniqueIdentifier;
    const std::string name = test::SupervisorScope::kPinnedDevice.name;
    engine_->listDeviceDirectories({identifier, name});
    EXPECT_TRUE(engine_->moves.empty());

    engine_->refusesMoves = true;
    engine_->listDeviceDirectories({identifier});
    EXPECT_EQ(engine_->moves.size(), 1u) << "tried once, not retried";
    EXPECT_EQ(engine_->availableDeviceBackups(), std::vector<std::string>{identifier});
    engine_->listDeviceDirectories({"Another device"});
    EXPECT_EQ(engine_->moves.size(), 1u);
}

}  // namespace
}  // namespace stowhaven
