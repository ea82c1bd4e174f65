#pragma once

#include "net/RestClient.h"

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>

namespace stowhaven {

// The engine's count of failed requests, shared by the login and every other request. A
// failed request is sent again at once, up to 10 times (11 tries), while the user reads
// "Retrying n/10..."; then the count stands at a marker and the user sees the service's
// message in an alert, and from then on no request is sent again and each failure shows
// its alert, until a reply with a body that reads starts the count again.
//
// Unlike the first tries, a retry waits for the Retry-After of the service when it sends
// one, and a canceled job sends nothing again and ends such a wait at once.
class SugarSyncRetries {
public:
    static constexpr std::int32_t kMaximum = 10;
    static constexpr std::int32_t kMarker = 32767;

    // After a request that failed with ERROR (REPLY, when one came): tells the user, counts
    // the failure, and answers whether the request goes again.
    bool failed(const std::string& error, const RestReply& reply);
    // A reply whose body read.
    void readReply();
    std::int32_t count() const;

    // Waits, unless the job is canceled first; false when it was.
    static bool waitUnlessCanceled(std::chrono::seconds wait);

private:
    void displayErrorMessage(const std::string& error);

    mutable std::mutex mutex_;
    std::int32_t count_ = 0;
};

}  // namespace stowhaven
