#pragma once

#include "platform/Date.h"
#include "platform/FileDescriptor.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace stowhaven {

// One backup or restore at a time on a device, across all the programs that run on it. A
// job holds a lock (flock) on <var>/lib/stowhaven/job.lock for its whole life, and writes
// its process, its kind and its start into that file, so that a program refused can name
// it. The kernel lets go of the lock when the process ends, however it ends: a killed job
// never leaves a stale lock behind.
//
// The sweeps of the temporary folder run under the same lock's guard: a second lock,
// job-start.lock, held only for an instant, keeps a job from starting while another
// program's sweep decides and deletes.
class JobLock {
public:
    // The lock for a job of KIND ("backup", "restore") starting at STARTED, or nothing with
    // REFUSAL set to one sentence: the running job, by its kind, start and process, or why
    // the lock couldn't be taken.
    static std::unique_ptr<JobLock> take(const std::string& kind, Date started, std::string& refusal);

    // Runs WORK unless another process runs a job, with no job able to start in the
    // meantime; answers that job, in one sentence, when WORK was left undone. A job of this
    // process itself doesn't stop it.
    static std::optional<std::string> unlessAnotherProcessRunsAJob(const std::function<void()>& work);
    // The job that another process runs, in one sentence; nothing when none runs.
    static std::optional<std::string> jobOfAnotherProcess();

    ~JobLock();
    JobLock(const JobLock&) = delete;
    JobLock& operator=(const JobLock&) = delete;

private:
    explicit JobLock(FileDescriptor file);

    FileDescriptor file_;
};

}  // namespace stowhaven
