#pragma once

#include "platform/dispatch/NotificationCenter.h"

#include <optional>
#include <ostream>
#include <string>

namespace stowhaven {

// The progress of a job as the flow reports it, for as long as the object lives: on a
// terminal one line redrawn in place ("[ 42%] Uploading data: Notes"), otherwise a plain
// line each time the text changes. Multi-line texts are shown on one line.
class ProgressLine {
public:
    ProgressLine(std::ostream& out, bool redrawInPlace);
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

private:
    void show();

    std::ostream& out_;
    bool redrawInPlace_;
    std::optional<double> fraction_;
    std::string text_;
    std::size_t shownWidth_ = 0;
    NotificationCenter::ObserverToken textObserver_{};
    NotificationCenter::ObserverToken fractionObserver_{};
};

}  // namespace stowhaven
