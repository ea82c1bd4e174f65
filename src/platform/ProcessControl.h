#pragma once

#include <functional>

namespace stowhaven {

// The end of the process. The program leaves through here, so that a test can watch it
// leave and go on.
class ProcessControl {
public:
    using ExitHandler = std::function<void(int status)>;

    // Ends the process at once with the status, as the device ends a program that leaves:
    // work still running on other threads is not waited for. Standard output and error are
    // flushed first. With a handler installed, calls it instead and returns.
    static void exit(int status);

    // Replaces the end of the process; an empty handler puts it back.
    static void setExitHandler(ExitHandler handler);
};

}  // namespace stowhaven
