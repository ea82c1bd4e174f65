#pragma once

#include "platform/Shell.h"

#include <sys/types.h>

#include <condition_variable>
#include <mutex>
#include <set>

namespace stowhaven {

// The shell of the machine the program runs on: /bin/sh with the device tools' environment,
// its own output sent nowhere, so that nothing reaches the terminal.
class HostShell final : public Shell {
public:
    void systemExecute(const std::string& command) override;
    // Each command leads a process group of its own: the group is asked to terminate, and
    // killed when it hasn't within a few seconds.
    void stopRunningCommands() override;
    void stopCommandsForGood() override;

private:
    std::mutex mutex_;
    std::condition_variable ended_;
    std::set<pid_t> running_;
    bool leaving_ = false;
};

}  // namespace stowhaven
