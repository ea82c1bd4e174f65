#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace stowhaven {

// An upload or a download in progress, of any of the network clients.
class Transfer {
public:
    virtual ~Transfer() = default;
    // Waits at most TIMEOUT for the end; true once it has ended.
    virtual bool waitUntilFinished(std::chrono::milliseconds timeout) = 0;
    virtual bool isFinished() const = 0;
    // Whole and confirmed by the server; meaningful once finished.
    virtual bool succeeded() const = 0;
    virtual std::int64_t bytesDone() const = 0;
    // All the bytes it carries, as far as known; 0 while unknown.
    virtual std::int64_t bytesExpected() const = 0;
    virtual double bytesPerSecond() const = 0;
    // Ends the transfer as soon as it can; it then finishes without success.
    virtual void abort() = 0;
    // What went wrong, as the client's lastError().
    virtual std::string error() const = 0;
};

}  // namespace stowhaven
