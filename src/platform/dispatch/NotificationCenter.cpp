#include "platform/dispatch/NotificationCenter.h"

#include <algorithm>
#include <condition_variable>
#include <thread>
#include <utility>
#include <vector>

namespace stowhaven {

// One observer's block, which deliveries call until the observer is retired.
class NotificationCenter::Registration {
public:
    Registration(std::string name, Queue* queue, ObserverBlock block)
        : name_(std::move(name)), queue_(queue), block_(std::move(block)) {}

    const std::string& name() const { return name_; }
    Queue* queue() const { return queue_; }

    void deliver(const Notification& notification) {
        const auto caller = std::this_thread::get_id();
        {
            std::lock_guard lock(mutex_);
            if (retired_) return;
            callingThreads_.push_back(caller);
        }
        // Ends the call however the block leaves, so that retire() is never kept waiting.
        struct CallEnd {
            Registration& registration;
            std::thread::id caller;
            ~CallEnd() { registration.endCall(caller); }
        } callEnd{*this, caller};
        block_(notification);
    }

    // After this returns no call starts, and none is running but on this thread.
    void retire() {
        const auto self = std::this_thread::get_id();
        std::unique_lock lock(mutex_);
        retired_ = true;
        callEnded_.wait(lock, [&] {
            return std::ranges::all_of(callingThreads_, [&](std::thread::id caller) { return caller == self; });
        });
    }

private:
    void endCall(std::thread::id caller) {
        {
            std::lock_guard lock(mutex_);
            callingThreads_.erase(std::ranges::find(callingThreads_, caller));
        }
        callEnded_.notify_all();
    }

    const std::string name_;
    Queue* const queue_;
    const ObserverBlock block_;
    std::mutex mutex_;
    std::condition_variable callEnded_;
    bool retired_ = false;
    // One entry per call in progress; a thread shows more than once in nested posts.
    std::vector<std::thread::id> callingThreads_;
};

NotificationCenter& NotificationCenter::defaultCenter() {
    static auto* const center = new NotificationCenter;
    return *center;
}

NotificationCenter::ObserverToken NotificationCenter::addObserver(std::string name, Queue* queue,
                                                                  ObserverBlock block) {
    auto registration = std::make_shared<Registration>(std::move(name), queue, std::move(block));
    std::lock_guard lock(mutex_);
    const auto token = static_cast<ObserverToken>(++lastToken_);
    observers_.emplace(token, std::move(registration));
    return token;
}

void NotificationCenter::removeObserver(ObserverToken token) {
    std::shared_ptr<Registration> registration;
    {
        std::lock_guard lock(mutex_);
        const auto found = observers_.find(token);
        if (found == observers_.end()) return;
        registration = std::move(found->second);
        observers_.erase(found);
    }
    registration->retire();
}

void NotificationCenter::post(std::string name, std::any object) {
    const auto notification = std::make_shared<const Notification>(Notification{std::move(name), std::move(object)});
    std::vector<std::shared_ptr<Registration>> receivers;
    {
        std::lock_guard lock(mutex_);
        for (const auto& [token, registration] : observers_) {
            if (registration->name() == notification->name) receivers.push_back(registration);
        }
    }
    for (const auto& receiver : receivers) {
        if (Queue* queue = receiver->queue()) {
            queue->async([receiver, notification] { receiver->deliver(*notification); });
        } else {
            receiver->deliver(*notification);
        }
    }
}

}  // namespace stowhaven
