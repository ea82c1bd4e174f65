#pragma once

#include "platform/Shell.h"

namespace stowhaven {

// The shell of the machine the program runs on: /bin/sh with the device tools' environment,
// its own output sent nowhere, so that nothing reaches the terminal.
class HostShell final : public Shell {
public:
    void systemExecute(const std::string& command) override;
};

}  // namespace stowhaven
