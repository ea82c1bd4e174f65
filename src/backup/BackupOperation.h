#pragma once

#include "platform/dispatch/Operation.h"

#include <atomic>
#include <memory>
#include <vector>

namespace stowhaven {

class BackupSession;
class DataBackupOperation;

// One whole backup, from the user's confirmation to "BACKUP_DONE": makes the session of the
// current selection, stores its record on the current engine, runs the data operations one
// after the other on a serial queue of its own, and closes with success or failure. Runs
// on a serial queue of width one, never on the main thread.
//
// Each run leaves its observers of "BACKUP_FAILED", "BACKUP_SUCCEEDED" and
// "PROGRESS_CANCELED" behind, bound to its own object, so that a later run's notices reach
// the earlier objects too; the closings are written to bear that, and to run twice.
class BackupOperation final : public Operation, public std::enable_shared_from_this<BackupOperation> {
public:
    void main() override;

    // Reached from main() and from the notices, on the operation's thread or the main one.
    void backupSucceeded();
    void backupFailed();

    // The session this run made; none before it has made one.
    const std::shared_ptr<BackupSession>& session() const { return session_; }

    // The start of the first phase while it runs, its length in seconds afterwards.
    double timing() const { return timing_; }
    void setTiming(double timing) { timing_ = timing; }

    // The data operations of SESSION, in the order they run: the folder of the application
    // data first when anything goes into it, then always the same fifteen.
    static std::vector<std::shared_ptr<DataBackupOperation>> dataOperationsFor(const BackupSession& session);

    // Removes the observers that the runs of this process left behind. For tests only.
    static void removeLeftBehindObserversForTesting();

private:
    void observeClosingNotices();
    // The steps of main(), between its start and its end.
    void run();
    // A cancel while main() runs closes the run once its steps have stopped, so that no
    // step writes into the session after the failure took it away.
    void canceled();
    // The data operations on an inner serial queue; false when one of them failed.
    bool runDataOperations();
    // This run's session is in the history and, on a file engine, its history file listed.
    bool sessionIsStored() const;

    double timing_ = 0;
    // This run has closed with success: no later failure notice takes its session away.
    std::atomic<bool> succeeded_{false};
    std::atomic<bool> running_{false};
    // The session this run made; a failure removes it, and nothing older.
    std::shared_ptr<BackupSession> session_;
};

}  // namespace stowhaven
