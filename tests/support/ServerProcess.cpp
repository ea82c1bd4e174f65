#include "support/ServerProcess.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>

extern char** environ;

namespace stowhaven::test {

namespace {

// Between two tries to connect to a server that is still starting.
constexpr auto kConnectRetry = std::chrono::milliseconds(20);

std::vector<char*> argumentVector(const std::vector<std::string>& arguments) {
    std::vector<char*> argv;
    for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    return argv;
}

// Starts ARGUMENTS in a process group of its own with OUTPUT as its standard output. The
// child is killed when the thread that started it ends, so that a test run that dies
// leaves no server behind; between fork and exec it makes only system calls.
pid_t spawnServer(const std::vector<std::string>& arguments, int output) {
    const auto argv = argumentVector(arguments);
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child != 0) return child;
    if (prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 || getppid() != parent) _exit(127);
    setpgid(0, 0);
    if (dup2(output, STDOUT_FILENO) < 0) _exit(127);
    execv(argv[0], argv.data());
    _exit(127);
}

sockaddr_in loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

bool answers(int port) {
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in address = loopback(port);
    const bool connected =
        socket >= 0 && ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    if (socket >= 0) ::close(socket);
    return connected;
}

}  // namespace

int freeLoopbackPort() {
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = loopback(0);
    socklen_t length = sizeof address;
    const bool bound = socket >= 0 && ::bind(socket, reinterpret_cast<const sockaddr*>(&address), length) == 0 &&
                       ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length) == 0;
    if (socket >= 0) ::close(socket);
    if (!bound) throw std::runtime_error("no free port on 127.0.0.1");
    return ntohs(address.sin_port);
}

ServerProcess::ServerProcess(const std::vector<std::string>& arguments) {
    int pipeEnds[2];
    if (pipe2(pipeEnds, O_CLOEXEC) != 0) throw std::runtime_error("no pipe for the server " + arguments.front());
    child_ = spawnServer(arguments, pipeEnds[1]);
    close(pipeEnds[1]);
    reader_ = std::thread([this, output = pipeEnds[0]] { readOutput(output); });
}

ServerProcess::~ServerProcess() {
    stop();
    if (reader_.joinable()) reader_.join();
}

bool ServerProcess::succeeds(const std::vector<std::string>& arguments) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    const auto argv = argumentVector(arguments);
    pid_t child = -1;
    if (posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ) != 0) child = -1;
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool ServerProcess::isRunning() {
    if (child_ <= 0) return false;
    if (waitpid(child_, nullptr, WNOHANG) == 0) return true;
    // Gone: what it started goes with it.
    kill(-child_, SIGKILL);
    child_ = -1;
    return false;
}

void ServerProcess::stop() {
    if (child_ <= 0) return;
    kill(-child_, SIGKILL);
    waitpid(child_, nullptr, 0);
    child_ = -1;
}

void ServerProcess::readOutput(int output) {
    std::string unread;
    char buffer[4096];
    for (;;) {
        const ssize_t count = read(output, buffer, sizeof buffer);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        unread.append(buffer, static_cast<std::size_t>(count));
        std::lock_guard lock(mutex_);
        for (auto end = unread.find('\n'); end != std::string::npos; end = unread.find('\n')) {
            lines_.push_back(unread.substr(0, end));
            unread.erase(0, end + 1);
        }
        linesArrived_.notify_all();
    }
    close(output);
    std::lock_guard lock(mutex_);
    outputEnded_ = true;
    linesArrived_.notify_all();
}

std::optional<std::string> ServerProcess::waitForLine(const std::string& prefix) {
    const auto deadline = std::chrono::steady_clock::now() + kLongestWait;
    std::unique_lock lock(mutex_);
    for (;;) {
        while (!lines_.empty()) {
            std::string line = std::move(lines_.front());
            lines_.pop_front();
            if (line.starts_with(prefix)) return line;
        }
        if (outputEnded_ || linesArrived_.wait_until(lock, deadline) == std::cv_status::timeout) return std::nullopt;
    }
}

bool ServerProcess::waitForPort(int port) {
    const auto deadline = std::chrono::steady_clock::now() + kLongestWait;
    while (std::chrono::steady_clock::now() < deadline) {
        if (answers(port)) return true;
        if (!isRunning()) return false;
        std::this_thread::sleep_for(kConnectRetry);
    }
    return false;
}

}  // namespace stowhaven::test
