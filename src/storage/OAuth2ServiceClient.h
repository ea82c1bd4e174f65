#pragma once

#include "net/RestClient.h"
#include "storage/AbstractStorageWrapper.h"
#include "storage/OAuth2Tokens.h"
#include "storage/TransferDisplay.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace stowhaven {

// How an engine talks to a service of OAuth 2 accounts: one REST client whose requests the
// account's tokens authorise, the app's secret masked in every message. Each call blocks
// until it is done; on failure it leaves the service's message as the engine's error
// (ERRORS), as ERRORTEXT reads it from the reply, and answers none or false. Expired access
// tokens are refreshed and the request sent again, and 429 and 5xx replies retried after
// their Retry-After, by the REST client.
class OAuth2ServiceClient {
public:
    using ErrorText = std::string (*)(const RestReply& reply);

    OAuth2ServiceClient(OAuth2Account account, AbstractStorageWrapper& errors, ErrorText errorText);

    OAuth2Tokens& tokens() { return *tokens_; }

    // The reply, whatever its status; none, with the engine's error, when the service can't
    // be asked at all.
    std::optional<RestReply> send(const RestRequest& request);
    // A successful reply, or none with the engine's error set from it.
    std::optional<RestReply> call(const RestRequest& request);
    // An upload or a download on a connection of its own, followed with the banner: the
    // successful reply, or none with the engine's error.
    std::optional<RestReply> transfer(RestRequest request, TransferDisplay::Direction direction, std::int64_t size);

    // The reply's body read by READER, or none with the engine's error.
    template <typename Reader>
    auto read(const RestReply& reply, Reader reader)
        -> decltype(reader(std::string_view(), std::declval<std::string&>())) {
        std::string error;
        auto value = reader(reply.body, error);
        if (!value) fail(error);
        return value;
    }

    // MESSAGE as the engine's error; false.
    bool fail(const std::string& message);
    // The failed reply's account as the engine's error; false.
    bool failWith(const RestReply& reply);

private:
    AbstractStorageWrapper& errors_;
    ErrorText errorText_;
    // Why no request can be sent at all (an app credential missing, a host refused), or none.
    std::optional<std::string> problem_;
    std::shared_ptr<OAuth2Tokens> tokens_;
    // Calls on one REST client must not overlap; transfers run on connections of their own.
    std::mutex mutex_;
    RestClient client_;
};

}  // namespace stowhaven
