#pragma once

#include "platform/Log.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven::test {

// Collects the log lines written while it lives.
class CapturedLog {
public:
    CapturedLog() {
        Log::setCapture([this](std::string_view line) {
            std::lock_guard lock(mutex_);
            lines_.emplace_back(line);
        });
    }
    ~CapturedLog() { Log::setCapture({}); }
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    bool contains(std::string_view text) const {
        std::lock_guard lock(mutex_);
        return std::any_of(lines_.begin(), lines_.end(),
                           [&](const std::string& line) { return line.find(text) != std::string::npos; });
    }
    bool empty() const {
        std::lock_guard lock(mutex_);
        return lines_.empty();
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

}  // namespace stowhaven::test
