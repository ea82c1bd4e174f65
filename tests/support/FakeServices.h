#pragma once

#include "platform/HostShell.h"
#include "platform/Platform.h"

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

namespace stowhaven::test {

// Keeps the command lines, and runs them through the host's shell only when told to.
// Commands come from background jobs too: the list is read once they are done.
class RecordingShell final : public Shell {
public:
    void systemExecute(const std::string& command) override {
        {
            std::lock_guard lock(mutex_);
            commands.push_back(command);
        }
        if (runsCommands) host_.systemExecute(command);
    }
    std::vector<std::string> commands;
    std::atomic<bool> runsCommands = false;

private:
    std::mutex mutex_;
    HostShell host_;
};

class FixedClock final : public Clock {
public:
    std::chrono::system_clock::time_point now() const override { return time; }
    std::chrono::system_clock::time_point time{};
};

class FakeReachability final : public Reachability {
public:
    bool isConnectedToNetwork() const override { return connected; }
    bool usingWiFi() const override { return connected && wifi; }
    void startNotifier() override { notifying = true; }
    void stopNotifier() override { notifying = false; }
    bool connected = true;
    bool wifi = true;
    bool notifying = false;
};

class FakeBattery final : public Battery {
public:
    void setMonitoringEnabled(bool enabled) override { monitoring = enabled; }
    bool isMonitoringEnabled() const override { return monitoring; }
    float level() const override { return monitoring ? charge : -1.0f; }
    BatteryState state() const override { return monitoring ? batteryState : BatteryState::Unknown; }
    bool monitoring = false;
    float charge = 1.0f;
    BatteryState batteryState = BatteryState::Full;
};

class RecordingSounds final : public Sounds {
public:
    void playDoneSound() override { ++doneSounds; }
    void vibrate() override { ++vibrations; }
    int doneSounds = 0;
    int vibrations = 0;
};

class RecordingCalendar final : public CalendarStore {
public:
    std::optional<std::string> addEvent(const CalendarEvent& event) override {
        events.push_back(event);
        return failure;
    }
    std::vector<CalendarEvent> events;
    std::optional<std::string> failure;
};

class RecordingMail final : public MailComposer {
public:
    bool canSendMail() const override { return canSend; }
    MailResult compose(const MailMessage& message) override {
        messages.push_back(message);
        return result;
    }
    void openMailURL(const std::string& url) override { openedURLs.push_back(url); }
    bool canSend = true;
    MailResult result = MailResult::Sent;
    std::vector<MailMessage> messages;
    std::vector<std::string> openedURLs;
};

class RecordingSystemNotifications final : public SystemNotifications {
public:
    void post(const std::string& name) override { posted.push_back(name); }
    std::vector<std::string> posted;
};

class FakeContactsAccess final : public ContactsAccess {
public:
    ContactsAuthorization authorizationStatus() const override { return status; }
    void requestAccess(std::function<void(bool granted)> completion) override {
        ++requests;
        completion(grants);
    }
    ContactsAuthorization status = ContactsAuthorization::Authorized;
    bool grants = true;
    int requests = 0;
};

// Puts doubles in place of every platform service for the life of the object, then the
// host's services again. The doubles are reached through the members.
class FakeServices {
public:
    FakeServices();
    ~FakeServices();
    FakeServices(const FakeServices&) = delete;
    FakeServices& operator=(const FakeServices&) = delete;

    RecordingShell& shell;
    FixedClock& clock;
    FakeReachability& reachability;
    FakeBattery& battery;
    RecordingSounds& sounds;
    RecordingCalendar& calendar;
    RecordingMail& mail;
    RecordingSystemNotifications& systemNotifications;
    FakeContactsAccess& contactsAccess;
};

}  // namespace stowhaven::test
