#pragma once

#include "core/ProgressDisplay.h"
#include "platform/Date.h"
#include "platform/DateFormatter.h"
#include "platform/dispatch/GlobalQueue.h"
#include "platform/dispatch/MainQueue.h"
#include "storage/StorageHelperProtocol.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>

namespace stowhaven::history {

// A date as the history views show it, in the device's time zone.
inline std::string viewDate(Date date) {
    static const DateFormatter formatter("yyyy-MM-dd @ HH:mm:ss");
    return formatter.stringFromDate(date);
}

// The waiting indicator of the history views.
inline void showIndicator(const std::string& text) {
    const auto display = ProgressDisplay::shared();
    display->setLabelText(text);
    display->show();
}

inline void hideIndicator() { ProgressDisplay::shared()->hide(); }

// The engine calls of one view under way, each behind the waiting indicator.
class Waiting {
public:
    void start(const std::string& text) {
        ++count_;
        showIndicator(text);
    }
    void end() {
        hideIndicator();
        --count_;
    }
    // Under way behind no indicator, as a login on the service's own screen.
    void startQuietly() { ++count_; }
    void endQuietly() { --count_; }
    bool any() const { return count_ > 0; }

private:
    std::atomic<int> count_{0};
};

// An engine call blocks its thread: it runs on a background queue, and AFTER on the main
// queue once it has returned, behind whatever the call's hooks sent there.
inline void callInBackground(Block call, Block after) {
    GlobalQueue::get(GlobalQueue::Priority::Default).async([call = std::move(call), after = std::move(after)] {
        call();
        MainQueue::shared().async(after);
    });
}

// Hooks that run HANDLER on the main queue while the controller lives: an engine runs its
// hooks on its own thread.
template <typename Controller, typename Handler>
SuccessHook successOnMain(const std::weak_ptr<Controller>& weak, Handler handler) {
    return [weak, handler](const HookObject& object) {
        MainQueue::shared().async([weak, handler, object] {
            if (const auto self = weak.lock()) handler(*self, object);
        });
    };
}

template <typename Controller, typename Handler>
FailureHook failureOnMain(const std::weak_ptr<Controller>& weak, Handler handler) {
    return [weak, handler] {
        MainQueue::shared().async([weak, handler] {
            if (const auto self = weak.lock()) handler(*self);
        });
    };
}

}  // namespace stowhaven::history
