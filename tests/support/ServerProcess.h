#pragma once

#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace stowhaven::test {

// A server of the tests run as a child in a process group of its own, its standard output
// read line by line on a thread (so that it never waits on a full pipe); killed with every
// process it started when the object goes, and killed by the system when the thread that
// made the object ends first (a test run that dies).
class ServerProcess {
public:
    // Only a server that hangs makes a wait last this long.
    static constexpr auto kLongestWait = std::chrono::seconds(60);

    // Starts ARGUMENTS, the first being the program's absolute path.
    explicit ServerProcess(const std::vector<std::string>& arguments);
    ~ServerProcess();
    ServerProcess(const ServerProcess&) = delete;
    ServerProcess& operator=(const ServerProcess&) = delete;

    // Whether ARGUMENTS run to their end with exit status 0 (a tool, not a server).
    static bool succeeds(const std::vector<std::string>& arguments);

    bool started() const { return child_ > 0; }
    // Whether the server still runs (false once it has ended, and reaped).
    bool isRunning();
    // Kills the server and what it started now, as a crash would.
    void stop();
    // Waits for a line that starts with PREFIX and answers it; nothing when the output ends
    // first or kLongestWait passes.
    std::optional<std::string> waitForLine(const std::string& prefix);
    // Waits until 127.0.0.1:PORT takes connections; false when the server ends first or
    // kLongestWait passes.
    bool waitForPort(int port);

private:
    void readOutput(int output);

    pid_t child_ = -1;
    std::mutex mutex_;
    std::condition_variable linesArrived_;
    std::deque<std::string> lines_;
    bool outputEnded_ = false;
    std::thread reader_;
};

// A port on 127.0.0.1 that nothing listened on a moment ago, for a server that can't pick
// its own; a clash with another process stays possible, so callers retry.
int freeLoopbackPort();

}  // namespace stowhaven::test
