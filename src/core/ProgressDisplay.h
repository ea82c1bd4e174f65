#pragma once

#include <memory>
#include <string>

namespace stowhaven {

// The display of a job in progress: a spinning indicator with a label and a detail line.
// Called on the main queue.
class ProgressDisplay {
public:
    virtual ~ProgressDisplay() = default;

    virtual bool isActive() const = 0;
    virtual void show() = 0;
    virtual void hide() = 0;
    virtual void setLabelText(const std::string& text) = 0;
    virtual void setDetailsLabelText(const std::string& text) = 0;

    // The process's display. Until a front end installs its own, its texts are logged.
    static std::shared_ptr<ProgressDisplay> shared();
    // Nothing puts the logging display back.
    static void setShared(std::shared_ptr<ProgressDisplay> display);
};

}  // namespace stowhaven
