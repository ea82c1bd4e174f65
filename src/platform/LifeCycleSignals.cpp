#include "platform/LifeCycleSignals.h"

#include "platform/Log.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <thread>

namespace stowhaven {

namespace {

// The handler only writes the signal's number here; the watching thread does the rest,
// since almost nothing may be done inside a signal handler.
int gSignalPipe[2] = {-1, -1};

void noteSignal(int number) {
    const int savedErrno = errno;
    const auto byte = static_cast<unsigned char>(number);
    // A full pipe drops the signal: the ones already in it have the same effect.
    [[maybe_unused]] const ssize_t written = write(gSignalPipe[1], &byte, 1);
    errno = savedErrno;
}

void serve(const LifeCycleSignals::Handlers& handlers) {
    while (true) {
        unsigned char number = 0;
        const ssize_t count = read(gSignalPipe[0], &number, 1);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return;
        if (number == SIGHUP && handlers.hangUp) handlers.hangUp();
        if (number == SIGTERM && handlers.terminate) handlers.terminate();
        if (number == SIGCONT && handlers.resume) handlers.resume();
        if (number == SIGINT && handlers.interrupt) handlers.interrupt();
    }
}

}  // namespace

void LifeCycleSignals::watch(Handlers handlers) {
    if (pipe2(gSignalPipe, O_CLOEXEC) != 0 || fcntl(gSignalPipe[1], F_SETFL, O_NONBLOCK) != 0) {
        SH_LOG("Can't watch the life-cycle signals: {}", std::strerror(errno));
        return;
    }
    std::thread([handlers = std::move(handlers)] { serve(handlers); }).detach();

    struct sigaction action = {};
    action.sa_handler = noteSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (const int number : {SIGHUP, SIGTERM, SIGCONT, SIGINT}) sigaction(number, &action, nullptr);
}

}  // namespace stowhaven
