#include "support/FtpServer.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <vector>

extern char** environ;

namespace stowhaven::test {

namespace {

constexpr const char* kPython = "/usr/bin/python3";
constexpr const char* kUser = "owner";
// A blank and quotes, as a user's password may hold them.
constexpr const char* kPassword = "open sesame's \"key\"";
// Only a server that hangs makes a wait last this long.
constexpr auto kLongestWait = std::chrono::seconds(60);

pid_t spawn(const std::vector<std::string>& arguments, const posix_spawn_file_actions_t* actions) {
    std::vector<char*> argv;
    for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    pid_t child = -1;
    if (posix_spawn(&child, argv[0], actions, nullptr, argv.data(), environ) != 0) return -1;
    return child;
}

}  // namespace

bool FtpServer::isAvailable() {
    static const bool available = [] {
        const pid_t child = spawn({kPython, "-c", "import pyftpdlib"}, nullptr);
        int status = 0;
        return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }();
    return available;
}

FtpServer::FtpServer(const FtpServerOptions& options) {
    std::vector<std::string> arguments{kPython,
                                       "-B",
                                       STOWHAVEN_SOURCE_DIR "/tests/support/ftp_server.py",
                                       root_.path().string(),
                                       "--user",
                                       kUser,
                                       "--password",
                                       kPassword};
    if (options.readLimit > 0) arguments.insert(arguments.end(), {"--read-limit", std::to_string(options.readLimit)});
    if (options.hostileListing) {
        setHostileListing(*options.hostileListing);
        arguments.insert(arguments.end(), {"--hostile-listing", listingFile()});
    }
    if (options.cutListing) arguments.emplace_back("--cut-listing");

    int pipeEnds[2];
    if (pipe2(pipeEnds, O_CLOEXEC) != 0) throw std::runtime_error("no pipe for the FTP server");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], STDOUT_FILENO);
    child_ = spawn(arguments, &actions);
    posix_spawn_file_actions_destroy(&actions);
    close(pipeEnds[1]);
    reader_ = std::thread([this, output = pipeEnds[0]] { readOutput(output); });
    const auto portLine = waitForLine("port ");
    if (child_ <= 0 || !portLine) {
        shutDown();
        throw std::runtime_error("the FTP server of the tests didn't start");
    }
    port_ = std::atoi(portLine->c_str() + 5);
}

FtpServer::~FtpServer() { shutDown(); }

void FtpServer::shutDown() {
    stop();
    if (reader_.joinable()) reader_.join();
}

FtpAccount FtpServer::account() const {
    FtpAccount account;
    account.host = "127.0.0.1";
    account.port = port_;
    account.login = kUser;
    account.password = kPassword;
    return account;
}

void FtpServer::setHostileListing(const std::string& bytes) const {
    std::ofstream(listingFile(), std::ios::binary | std::ios::trunc) << bytes;
}

void FtpServer::stop() {
    if (child_ <= 0) return;
    kill(child_, SIGKILL);
    waitpid(child_, nullptr, 0);
    child_ = -1;
}

void FtpServer::readOutput(int output) {
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

std::optional<std::string> FtpServer::waitForLine(const std::string& prefix) {
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

}  // namespace stowhaven::test
