#pragma once

#include "platform/dispatch/Notification.h"
#include "platform/dispatch/Queue.h"

#include <any>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace stowhaven {

// Hands named notifications to the observers of that name, in the order they registered.
// An observer chooses where its block runs: on a queue, or, with no queue, at once on the
// posting thread, before post() returns. Blocks may add and remove observers and post.
class NotificationCenter {
public:
    using ObserverBlock = std::function<void(const Notification&)>;
    enum class ObserverToken : std::uint64_t {};

    // Lives as long as the process, so that blocks still running at exit can reach it.
    static NotificationCenter& defaultCenter();

    NotificationCenter() = default;
    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;

    // The queue, if any, must outlive the observer.
    ObserverToken addObserver(std::string name, Queue* queue, ObserverBlock block);
    // Once this returns the block is not called again, not even for notifications posted
    // earlier and still waiting on its queue. A call already running on another thread is
    // waited for, so that what the block refers to may go right after; a call running on
    // this thread (a block removing its own observer) is not. Unknown tokens are ignored.
    void removeObserver(ObserverToken token);

    void post(std::string name, std::any object = {});

private:
    class Registration;

    mutable std::mutex mutex_;
    std::map<ObserverToken, std::shared_ptr<Registration>> observers_;
    std::uint64_t lastToken_ = 0;
};

}  // namespace stowhaven
