#pragma once

#include <atomic>
#include <cstdint>

namespace stowhaven {

// How far a transfer running on another thread has come, and the request to end it; read
// and written from both threads.
struct TransferProgress {
    std::atomic<std::int64_t> bytesDone{0};
    // The bytes the transfer carries in all, as the request or the server's reply tells them;
    // 0 while unknown.
    std::atomic<std::int64_t> bytesExpected{0};
    std::atomic<double> bytesPerSecond{0};
    std::atomic<bool> abortRequested{false};
};

}  // namespace stowhaven
