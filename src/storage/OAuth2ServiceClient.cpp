#include "storage/OAuth2ServiceClient.h"

#include "platform/Log.h"
#include "storage/TransferFollowing.h"

namespace stowhaven {

OAuth2ServiceClient::OAuth2ServiceClient(OAuth2Account account, AbstractStorageWrapper& errors, ErrorText errorText)
    : errors_(errors), errorText_(errorText), problem_(account.problem) {
    client_.addSecret(account.clientSecret);
    tokens_ = std::make_shared<OAuth2Tokens>(std::move(account));
    client_.setAuthorization(tokens_);
}

bool OAuth2ServiceClient::fail(const std::string& message) {
    SH_LOG("Failed. Error <{}>", message);
    errors_.setErrorMessage(message);
    return false;
}

bool OAuth2ServiceClient::failWith(const RestReply& reply) {
    // A refused refresh tells more than the 401 it left.
    const auto tokenError = reply.status == 401 ? tokens_->lastError() : std::nullopt;
    return fail(tokenError.value_or(errorText_(reply)));
}

std::optional<RestReply> OAuth2ServiceClient::send(const RestRequest& request) {
    if (problem_) {
        fail(*problem_);
        return std::nullopt;
    }
    std::lock_guard lock(mutex_);
    return client_.perform(request);
}

std::optional<RestReply> OAuth2ServiceClient::call(const RestRequest& request) {
    auto reply = send(request);
    if (!reply || reply->isSuccess()) return reply;
    failWith(*reply);
    return std::nullopt;
}

std::optional<RestReply> OAuth2ServiceClient::transfer(RestRequest request, TransferDisplay::Direction direction,
                                                       std::int64_t size) {
    const auto running = client_.start(std::move(request));
    if (std::string error; !followTransfer(*running, direction, size, error)) {
        if (running->reply().status != 0) {
            failWith(running->reply());
        } else {
            fail(error);
        }
        return std::nullopt;
    }
    return running->reply();
}

}  // namespace stowhaven
