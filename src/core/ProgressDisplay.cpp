#include "core/ProgressDisplay.h"

#include "platform/Log.h"

#include <mutex>

namespace stowhaven {

namespace {

class LoggingProgressDisplay final : public ProgressDisplay {
public:
    bool isActive() const override { return active_; }
    void show() override { active_ = true; }
    void hide() override { active_ = false; }
    void setLabelText(const std::string& text) override { SH_LOG("{}", text); }
    void setDetailsLabelText(const std::string& text) override { SH_LOG("{}", text); }

private:
    bool active_ = false;
};

std::mutex gMutex;
std::shared_ptr<ProgressDisplay> gShared;

}  // namespace

std::shared_ptr<ProgressDisplay> ProgressDisplay::shared() {
    std::lock_guard lock(gMutex);
    if (!gShared) gShared = std::make_shared<LoggingProgressDisplay>();
    return gShared;
}

void ProgressDisplay::setShared(std::shared_ptr<ProgressDisplay> display) {
    std::lock_guard lock(gMutex);
    gShared = std::move(display);
}

}  // namespace stowhaven
