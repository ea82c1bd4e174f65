#include "storage/TransferFollowing.h"

#include "core/Supervisor.h"
#include "platform/Log.h"

namespace stowhaven {

namespace {

// How often a running transfer is looked at: for its progress and for a cancel of the job.
constexpr std::chrono::milliseconds kTransferPoll{5};

}  // namespace

bool followTransfer(Transfer& transfer, TransferDisplay::Direction direction, std::int64_t size, std::string& error) {
    TransferDisplay progress(direction);
    // A size the engine doesn't know is the one the transfer learns from the server.
    const auto update = [&] {
        progress.update(transfer.bytesDone(), size > 0 ? size : transfer.bytesExpected(), transfer.bytesPerSecond());
    };
    const Supervisor& supervisor = Supervisor::shared();
    bool aborted = false;
    while (!transfer.waitUntilFinished(kTransferPoll)) {
        update();
        if (supervisor.isCanceled() && !aborted) {
            SH_LOG("Operation canceled!");
            transfer.abort();
            aborted = true;
        }
    }
    update();
    if (transfer.succeeded()) return true;
    error = aborted ? std::string("Canceled") : transfer.error();
    SH_LOG("error: {}", error);
    return false;
}

}  // namespace stowhaven
