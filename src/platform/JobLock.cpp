#include "platform/JobLock.h"

#include "platform/DeviceRoot.h"
#include "platform/Log.h"
#include "platform/PrivateFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <sstream>

namespace stowhaven {

namespace {

constexpr const char* kJobFile = "job.lock";
constexpr const char* kStartFile = "job-start.lock";

// Whether a job of this process holds the lock: a lock of its own would stand in the way
// of a test through another descriptor.
std::atomic<bool> gHeldHere{false};

std::string lockFolder() { return DeviceRoot::var() + "/lib/stowhaven"; }

// One of the lock files, opened; the folder is the program's own, so that no other user
// can hold a lock file open or put a link in its place.
FileDescriptor openLockFile(const char* name, std::string& error) {
    if (!PrivateFolder::isPrivate(lockFolder()) && !PrivateFolder::make(DeviceRoot::var() + "/lib", {"stowhaven"})) {
        error = "<" + lockFolder() + "> isn't the program's own folder";
        return FileDescriptor();
    }
    const std::string path = lockFolder() + "/" + name;
    FileDescriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file.isOpen()) error = "Couldn't open <" + path + ">: " + std::strerror(errno);
    return file;
}

bool lock(const FileDescriptor& file, int operation) {
    while (::flock(file.get(), operation) != 0) {
        if (errno != EINTR) return false;
    }
    return true;
}

std::string lockError(const char* name) {
    return fmt::format("Couldn't lock <{}/{}>: {}", lockFolder(), name, std::strerror(errno));
}

std::string contentsOf(const FileDescriptor& file) {
    std::string text(256, '\0');
    const ssize_t count = ::pread(file.get(), text.data(), text.size(), 0);
    text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return text;
}

// The running job as its file tells it: "<pid> <kind> <start>".
std::string runningJob(const FileDescriptor& file) {
    std::istringstream fields(contentsOf(file));
    long pid = 0;
    std::string kind;
    double started = 0;
    if (!(fields >> pid >> kind >> started)) return "Another backup or restore is running on this device";
    return fmt::format("A {} started on {} by process {} is running on this device: one backup or restore at a time",
                       kind, Date(started).description(), pid);
}

}  // namespace

std::unique_ptr<JobLock> JobLock::take(const std::string& kind, Date started, std::string& refusal) {
    const FileDescriptor start = openLockFile(kStartFile, refusal);
    if (!start.isOpen()) return nullptr;
    if (!lock(start, LOCK_EX)) {
        refusal = lockError(kStartFile);
        return nullptr;
    }
    FileDescriptor job = openLockFile(kJobFile, refusal);
    if (!job.isOpen()) return nullptr;
    if (!lock(job, LOCK_EX | LOCK_NB)) {
        refusal = errno == EWOULDBLOCK ? runningJob(job) : lockError(kJobFile);
        return nullptr;
    }
    const std::string holder =
        fmt::format("{} {} {:.3f}\n", ::getpid(), kind, started.timeIntervalSinceReferenceDate());
    if (::ftruncate(job.get(), 0) != 0 || ::pwrite(job.get(), holder.data(), holder.size(), 0) < 0) {
        SH_LOG("Couldn't write the running job into <{}/{}>: {}", lockFolder(), kJobFile, std::strerror(errno));
    }
    gHeldHere = true;
    return std::unique_ptr<JobLock>(new JobLock(std::move(job)));
}

std::optional<std::string> JobLock::unlessAnotherProcessRunsAJob(const std::function<void()>& work) {
    if (gHeldHere) {
        work();
        return std::nullopt;
    }
    std::string error;
    const FileDescriptor start = openLockFile(kStartFile, error);
    const FileDescriptor job =
        start.isOpen() && lock(start, LOCK_EX) ? openLockFile(kJobFile, error) : FileDescriptor();
    if (job.isOpen() && !lock(job, LOCK_SH | LOCK_NB) && errno == EWOULDBLOCK) return runningJob(job);
    // Without its lock files no job can run either.
    if (!error.empty()) SH_LOG("{}", error);
    work();
    return std::nullopt;
}

std::optional<std::string> JobLock::jobOfAnotherProcess() {
    return unlessAnotherProcessRunsAJob([] {});
}

JobLock::JobLock(FileDescriptor file) : file_(std::move(file)) {}

JobLock::~JobLock() {
    if (::ftruncate(file_.get(), 0) != 0) {
        SH_LOG("Couldn't clear <{}/{}>: {}", lockFolder(), kJobFile, std::strerror(errno));
    }
    gHeldHere = false;
}

}  // namespace stowhaven
