#include "storage/onedrive/SkyDriveQuery.h"

#include "core/Supervisor.h"
#include "platform/Log.h"
#include "storage/TransferFollowing.h"
#include "storage/onedrive/SkyDriveReplies.h"
#include "storage/onedrive/SkyDriveRetryRule.h"

#include <fmt/format.h>

namespace stowhaven {

namespace {

bool isRedirect(const RestReply& reply) {
    return reply.code == CURLE_OK && (reply.status == 301 || reply.status == 302 || reply.status == 303 ||
                                      reply.status == 307 || reply.status == 308);
}

}  // namespace

// The rule's tries are the only ones: the client sends each request once.
SkyDriveQuery::SkyDriveQuery(std::shared_ptr<SkyDriveTokens> tokens, AbstractStorageWrapper& errors)
    : tokens_(std::move(tokens)), errors_(errors), client_(RetryPolicy{1, std::chrono::seconds(0)}) {
    client_.setAuthorization(tokens_);
}

std::nullopt_t SkyDriveQuery::fail(const std::string& message) {
    SH_LOG("Failed. Error <{}>", message);
    errors_.setErrorMessage(message);
    return std::nullopt;
}

std::optional<RestReply> SkyDriveQuery::withRetries(const Attempt& attempt, bool redirectIsAnswer) {
    for (int retry = 0;; ++retry) {
        std::string error;
        RestReply reply = attempt(error);
        if (reply.isSuccess() || (redirectIsAnswer && isRedirect(reply))) return reply;
        const auto pause = SkyDriveRetryRule::pauseAfter(reply);
        const bool retrying = pause && retry < SkyDriveRetryRule::kMaximumRetries;
        if (retrying) {
            const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(*pause).count();
            SH_LOG("Throttling: Retry {}/{} after {} seconds", retry, SkyDriveRetryRule::kMaximumRetries, seconds);
            Supervisor::shared().notifyProgress(
                std::nullopt,
                fmt::format("{}Retrying {}/{} in {}s...", *pause > SkyDriveRetryRule::kPause ? "Throttling: " : "",
                            retry, SkyDriveRetryRule::kMaximumRetries, seconds));
        }
        if (Supervisor::shared().isCanceled()) return fail("Operation canceled!");
        if (!retrying) {
            // A refused refresh tells more than the 401 it left.
            const auto tokenError = reply.status == 401 ? tokens_->lastError() : std::nullopt;
            if (tokenError) return fail(*tokenError);
            return fail(reply.status != 0 || error.empty() ? SkyDriveReplies::errorText(reply) : error);
        }
        if (!RestClient::waitUnlessCanceled(*pause, [] { return Supervisor::shared().isCanceled(); }))
            return fail("Operation canceled!");
    }
}

std::optional<RestReply> SkyDriveQuery::perform(const RestRequest& request, bool redirectIsAnswer) {
    errors_.setErrorMessage(std::nullopt);
    return withRetries(
        [&](std::string&) {
            std::lock_guard lock(mutex_);
            return client_.perform(request);
        },
        redirectIsAnswer);
}

std::optional<RestReply> SkyDriveQuery::transfer(const RestRequest& request, TransferDisplay::Direction direction,
                                                 std::int64_t size) {
    errors_.setErrorMessage(std::nullopt);
    return withRetries(
        [&](std::string& error) {
            const auto running = client_.start(request);
            followTransfer(*running, direction, size, error);
            return running->reply();
        },
        false);
}

}  // namespace stowhaven
