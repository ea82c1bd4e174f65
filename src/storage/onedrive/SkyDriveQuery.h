#pragma once

#include "net/RestClient.h"
#include "storage/AbstractStorageWrapper.h"
#include "storage/TransferDisplay.h"
#include "storage/onedrive/SkyDriveTokens.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace stowhaven {

// How the OneDrive engine sends a request: blocking, tried again by SkyDriveRetryRule with the
// retry shown on the job's progress, ended at once by a cancel of the job (its wait included).
// A failure leaves the service's message as the engine's error (ERRORS) and answers none.
class SkyDriveQuery {
public:
    SkyDriveQuery(std::shared_ptr<SkyDriveTokens> tokens, AbstractStorageWrapper& errors);

    // A short call whose reply is read as text; with REDIRECTISANSWER a redirect is a success
    // too (the address of a file's bytes).
    std::optional<RestReply> perform(const RestRequest& request, bool redirectIsAnswer = false);
    // An upload or a download on a connection of its own, followed with the banner.
    std::optional<RestReply> transfer(const RestRequest& request, TransferDisplay::Direction direction,
                                      std::int64_t size);
    // Leaves MESSAGE as the engine's error; none.
    std::nullopt_t fail(const std::string& message);

private:
    // One try: the reply, and the transfer's own error where there is no whole reply.
    using Attempt = std::function<RestReply(std::string& error)>;
    std::optional<RestReply> withRetries(const Attempt& attempt, bool redirectIsAnswer);

    std::shared_ptr<SkyDriveTokens> tokens_;
    AbstractStorageWrapper& errors_;
    // Calls on one REST client must not overlap; transfers run on connections of their own.
    std::mutex mutex_;
    RestClient client_;
};

}  // namespace stowhaven
