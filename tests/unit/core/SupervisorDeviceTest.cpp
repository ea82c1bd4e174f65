// What the Supervisor does on the device and shows its user: a respring, the signals at a
// job's end, the calendar entry, mail, and the progress of a job.

#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "platform/TemporaryDirectory.h"
#include "platform/dispatch/GlobalQueue.h"
#include "platform/dispatch/MainQueue.h"
#include "support/CapturedLog.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

#include <any>
#include <chrono>
#include <filesystem>
#include <fstream>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

class SupervisorDeviceTest : public ::testing::Test {
protected:
    SupervisorDeviceTest() { commands().clear(); }

    std::vector<std::string>& commands() { return scope_.services.shell.commands; }
    std::vector<test::RecordingAlertPresenter::Shown>& alerts() {
        scope_.serveMainQueue();
        return scope_.screens.alerts->alerts;
    }

    test::SupervisorScope scope_;
    Supervisor& supervisor_ = scope_.supervisor();
};

// The scope's device root is a copy of a device, not "/": a line that would restart the
// machine at hand is logged and never reaches the shell.
TEST_F(SupervisorDeviceTest, ARespringTakesTheFirstWayTheDeviceHasAndElseAsksTheUser) {
    const auto& posted = scope_.services.systemNotifications.posted;

    supervisor_.respring();
    ASSERT_EQ(alerts().size(), 1u);
    EXPECT_EQ(alerts()[0].message, "Please respring your device manually to apply the changes.");

    scope_.makeFile("/usr/bin/killall");
    supervisor_.respring();
    EXPECT_EQ(posted, std::vector<std::string>{"com.apple.language.changed"});

    test::CapturedLog log;
    scope_.makeFile("/bin/launchctl");
    supervisor_.respring();
    EXPECT_TRUE(log.contains("as it acts on the running system: launchctl stop com.apple.SpringBoard"));
    scope_.makeFile("/usr/bin/respring");
    supervisor_.respring();
    EXPECT_TRUE(log.contains("as it acts on the running system: respring"));
    supervisor_.reboot();
    EXPECT_TRUE(log.contains("as it acts on the running system: reboot"));
    EXPECT_TRUE(commands().empty());
    EXPECT_EQ(posted.size(), 1u);
    EXPECT_EQ(alerts().size(), 1u);
}

TEST_F(SupervisorDeviceTest, TheEndOfAJobIsSignalledAsTheSettingsAsk) {
    supervisor_.setJobSummaryProvider([] { return JobSummary{"1. gawk\n", "#tweet ", "", ""}; });
    supervisor_.backupOrRestoreDone();
    gSoundEnabled = true;
    gVibrateEnabled = true;
    gICalIntegrationEnabled = true;
    supervisor_.backupOrRestoreDone();

    EXPECT_EQ(scope_.services.sounds.doneSounds, 1);
    EXPECT_EQ(scope_.services.sounds.vibrations, 1);
    EXPECT_EQ(scope_.services.calendar.events.size(), 1u);
}

TEST_F(SupervisorDeviceTest, TheCalendarEntryTellsTheDirectionTheSessionAndThePackages) {
    auto& events = scope_.services.calendar.events;
    scope_.services.clock.time = Date(436000000).timePoint();
    JobSummary summary{"1. gawk\n", "#Stowhaven™(1)'s just restore 1 packages! ", "Spring clean", "Before the upgrade"};
    supervisor_.setJobSummaryProvider([&] { return summary; });
    gIsBackupMode = false;
    supervisor_.storeEKEvent();

    summary.lastSessionTitle.clear();
    summary.lastSessionDescription.clear();
    gIsBackupMode = true;
    supervisor_.storeEKEvent();

    supervisor_.setJobSummaryProvider([] { return JobSummary{"", "#tweet", "Title", ""}; });
    supervisor_.storeEKEvent();

    ASSERT_EQ(events.size(), 2u) << "without a packages text there is no entry";
    EXPECT_EQ(events[0].title, "Stowhaven™: Restore [Spring clean]");
    EXPECT_EQ(events[0].notes, "Description: Before the upgrade\n#Stowhaven™(1)'s just restore 1 packages! 1. gawk\n");
    EXPECT_EQ(events[0].start, scope_.services.clock.time);
    EXPECT_EQ(events[0].end, scope_.services.clock.time);
    EXPECT_EQ(events[1].title, "Stowhaven™: Backup");
    EXPECT_EQ(events[1].notes, "#Stowhaven™(1)'s just restore 1 packages! 1. gawk\n");
}

class SupervisorMailTest : public SupervisorDeviceTest {
protected:
    Email packagesList() const {
        return {"Hi!",
                "Packages list",
                {"ann@example.com", "bob@example.com"},
                {{"/tmp/a b.txt", "text/plain", "a.txt"}, {"/tmp/c.png", "image/png", "c.png"}}};
    }

    test::RecordingMail& mail_ = scope_.services.mail;
    std::shared_ptr<test::RecordingAlertPresenter> caller_ = std::make_shared<test::RecordingAlertPresenter>();
};

TEST_F(SupervisorMailTest, AMailIsComposedOnTheMainQueueWithTheDevicesFactsAndItsOutcomeShown) {
    const fs::path card = TemporaryDirectory::path() + "/Stow Haven.vcf";
    std::ofstream(card) << "BEGIN:VCARD";
    supervisor_.setCaller(caller_);

    supervisor_.sendEmail(packagesList());
    EXPECT_TRUE(mail_.messages.empty());
    scope_.serveMainQueue();

    ASSERT_EQ(mail_.messages.size(), 1u);
    const MailMessage& message = mail_.messages[0];
    EXPECT_EQ(message.subject, std::string("Stowhaven™(") + STOWHAVEN_VERSION + ") - Packages list");
    EXPECT_EQ(message.body, "Hi!\n\n\n-- iPhone7,2-8.1.2: 0123456789abcdef0123456789abcdef01234567");
    EXPECT_EQ(message.toRecipients, packagesList().toRecipients);
    ASSERT_EQ(message.attachments.size(), 2u);
    EXPECT_EQ(message.attachments[1].fileName, "c.png");
    ASSERT_EQ(caller_->alerts.size(), 1u);
    EXPECT_EQ(caller_->alerts[0].title, "Email sent");
    EXPECT_FALSE(fs::exists(card));
}

TEST_F(SupervisorMailTest, ADeviceThatCantSendMailHandsTheMailApplicationAnAddress) {
    mail_.canSend = false;
    supervisor_.sendEmail(packagesList());
    scope_.serveMainQueue();

    EXPECT_TRUE(mail_.messages.empty());
    EXPECT_EQ(mail_.openedURLs, std::vector<std::string>{"mailto:ann%40example.com,bob%40example.com"
                                                         "?subject=Packages%20list&body=Hi%21"
                                                         "&attachment=%2Ftmp%2Fa%20b.txt"});
}

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
