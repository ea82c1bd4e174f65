#include "storage/TransferFollowing.h"

#include "core/Supervisor.h"
#include "platform/Log.h"

namespace stowhaven {

namespace {

// How often a running transfer is looked at: for its progress and for a cancel of the job.
constexpr std::chrono::milliseconds kTransferPoll{5};

}  // namespace

bool followTransfer(Transfer& transfer, TransferDisplay::Direction direction, std::int64_t size, std::string& error) {
    TransferDisplay progress(direction, size);
    const Supervisor& supervisor = Supervisor::shared();
    bool aborted = false;
    while (!transfer.waitUntilFinished(kTransferPoll)) {
        progress.update(transfer.bytesDone(), transfer.bytesPerSecond());
        if (supervisor.isCanceled() && !aborted) {
            SH_LOG("Operation canceled!");
            transfer.abort();
            aborted = true;
        }
    }
    progress.update(transfer.bytesDone(), transfer.bytesPerSecond());
    if (transfer.succeeded()) return true;
    error = aborted ? std::string("Canceled") : transfer.error();
    SH_LOG("error: {}", error);
    return false;
}

}  // namespace stowhaven
