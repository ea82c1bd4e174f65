#include "platform/HostShell.h"

#include "platform/DeviceTools.h"
#include "platform/Log.h"
#include "platform/TemporaryDirectory.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <vector>

namespace stowhaven {

namespace {

class SpawnActions {
public:
    // A command starts in the program's own temporary folder: a line whose "cd" fails
    // then still acts there and nowhere else.
    explicit SpawnActions(const std::string& workingFolder) {
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_addchdir_np(&actions_, workingFolder.c_str());
        for (int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            const int flags = descriptor == STDIN_FILENO ? O_RDONLY : O_WRONLY;
            posix_spawn_file_actions_addopen(&actions_, descriptor, "/dev/null", flags, 0);
        }
    }
    ~SpawnActions() { posix_spawn_file_actions_destroy(&actions_); }
    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;
    const posix_spawn_file_actions_t* get() const { return &actions_; }

private:
    posix_spawn_file_actions_t actions_;
};

// What a tool gets to write its last bytes and leave once asked to terminate.
constexpr std::chrono::seconds kTerminationGrace{5};

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

void HostShell::systemExecute(const std::string& command) {
    auto setting = DeviceTools::forCurrentRoot();
    if (!setting) {
        SH_LOG("Not run: {}", command);
        return;
    }
    std::vector<std::string> arguments = {"sh", "-c", wrap(command, setting->searchPathFront)};
    std::vector<std::string>& environment = setting->environment;
    std::vector<char*> argv = pointersTo(arguments);
    std::vector<char*> envp = pointersTo(environment);

    SpawnActions actions(TemporaryDirectory::path());
    // A process group of its own: Ctrl-C on the terminal reaches the program, which asks
    // whether to cancel, and never cuts a command short.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    posix_spawnattr_setpgroup(&attributes, 0);
    pid_t child = 0;
    int spawnError = 0;
    {
        // Started and recorded at once, so that a stop never misses a command starting.
        std::lock_guard lock(mutex_);
        spawnError =
            leaving_ ? ECANCELED : posix_spawn(&child, "/bin/sh", actions.get(), &attributes, argv.data(), envp.data());
        if (spawnError == 0) running_.insert(child);
    }
    posix_spawnattr_destroy(&attributes);
    if (spawnError != 0) {
        SH_LOG("Couldn't start the shell for <{}>: {}", command, std::strerror(spawnError));
        return;
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    std::lock_guard lock(mutex_);
    running_.erase(child);
    ended_.notify_all();
}

void HostShell::stopRunningCommands() {
    std::unique_lock lock(mutex_);
    for (const pid_t group : running_) kill(-group, SIGTERM);
    if (ended_.wait_for(lock, kTerminationGrace, [this] { return running_.empty(); })) return;
    for (const pid_t group : running_) kill(-group, SIGKILL);
    ended_.wait(lock, [this] { return running_.empty(); });
}

void HostShell::stopCommandsForGood() {
    {
        std::lock_guard lock(mutex_);
        leaving_ = true;
    }
    stopRunningCommands();
}

}  // namespace stowhaven
