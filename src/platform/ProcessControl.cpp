#include "platform/ProcessControl.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <mutex>

namespace stowhaven {

namespace {

std::mutex gHandlerMutex;
ProcessControl::ExitHandler gExitHandler;

}  // namespace

void ProcessControl::exit(int status) {
    ExitHandler handler;
    {
        std::lock_guard lock(gHandlerMutex);
        handler = gExitHandler;
    }
    if (handler) {
        handler(status);
        return;
    }
    std::cout.flush();
    std::cerr.flush();
    std::fflush(nullptr);
    // Not std::exit: that would wait for the blocks running on the global queues.
    std::_Exit(status);
}

void ProcessControl::setExitHandler(ExitHandler handler) {
    std::lock_guard lock(gHandlerMutex);
    gExitHandler = std::move(handler);
}

}  // namespace stowhaven
