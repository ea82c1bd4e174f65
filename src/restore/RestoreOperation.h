#pragma once

#include "platform/dispatch/Operation.h"

#include <atomic>
#include <memory>
#include <vector>

namespace stowhaven {

class BackupSession;
class DataRestoreOperation;

// One whole restore of the current session: sources first, then packages, then on file
// engines the indexed data, the applications and the tweak places, one at a time on a
// serial queue of its own. It has no outcome of its own: what failed shows in each
// package's install log, in the restore's report and in the log. It always ends with "DONE_MESSAGE" and
// "RESTORE_DONE", after giving the data folders back to the user "mobile".
class RestoreOperation final : public Operation {
public:
    void main() override;

    // The restore operations of SESSION on the current storage, in the order they run.
    static std::vector<std::shared_ptr<DataRestoreOperation>> restoreOperationsFor(const BackupSession& session);

    double timing() const { return timing_; }
    void setTiming(double timing) { timing_ = timing; }
    bool isDone() const { return fIsFinished_; }

private:
    void finish();

    std::atomic<bool> fIsFinished_{false};
    double timing_ = 0;
    std::shared_ptr<BackupSession> backupSession_;
};

}  // namespace stowhaven
