#pragma once

#include <functional>

namespace stowhaven {

// The signals by which a terminal program learns of its life-cycle: SIGHUP (its terminal
// went away), SIGTERM (it is asked to end), SIGCONT (it goes on after a stop) and SIGINT
// (Ctrl-C).
class LifeCycleSignals {
public:
    struct Handlers {
        std::function<void()> hangUp;
        std::function<void()> terminate;
        std::function<void()> resume;
        std::function<void()> interrupt;
    };

    // From now on these signals no longer end the process: a thread of its own takes them
    // one at a time and calls the handler of each there. Once per process. Commands that
    // the program starts still get the signals' usual actions.
    static void watch(Handlers handlers);
};

}  // namespace stowhaven
