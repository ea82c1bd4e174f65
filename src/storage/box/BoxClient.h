#pragma once

#include "net/RestClient.h"
#include "storage/AbstractStorageWrapper.h"
#include "storage/box/BoxReplies.h"
#include "storage/box/BoxService.h"
#include "storage/box/BoxTokens.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// The requests of the Box API that the engine makes, everything addressed by id. Each blocks
// until it is done; on failure it leaves the service's message as the engine's error
// (ERRORS) and answers none or false. Expired access tokens are refreshed and the request
// sent again, and 429 and 5xx replies retried after their Retry-After, by the REST client.
class BoxClient {
public:
    BoxClient(BoxService service, AbstractStorageWrapper& errors);

    OAuth2Tokens& tokens() { return *tokens_; }
    const BoxService& service() const { return service_; }

    std::optional<BoxUser> currentUser();
    std::optional<BoxItem> folder(const std::string& id);
    // Every item of the folder, page after page.
    std::optional<std::vector<BoxItem>> folderItems(const std::string& id);
    std::optional<BoxItem> createFolder(const std::string& name, const std::string& parentId);
    bool renameFolder(const std::string& id, const std::string& name);
    // A folder goes with everything in it.
    bool deleteItem(const std::string& id, bool isFolder);
    // Sends the local file into the folder under NAME; a name taken there fails, and the
    // file stored stays as it is.
    std::optional<BoxItem> upload(const std::string& localPath, const std::string& name, const std::string& folderId);
    // Fetches the file to LOCALPATH; nothing is left there after a failure.
    bool download(const std::string& id, const std::string& localPath);

private:
    // The reply, whatever its status; none, with the engine's error, when Box can't be asked.
    std::optional<RestReply> send(const RestRequest& request);
    // A successful reply, or none with the engine's error set from it.
    std::optional<RestReply> call(const RestRequest& request);
    // The failed reply's account as the engine's error; false.
    bool failWith(const RestReply& reply);
    // The reply's body read by READER, or none with the engine's error.
    template <typename Reader>
    auto read(const RestReply& reply, Reader reader)
        -> decltype(reader(std::string_view(), std::declval<std::string&>()));
    bool fail(const std::string& message);
    std::optional<std::string> downloadAddress(const std::string& id);

    BoxService service_;
    AbstractStorageWrapper& errors_;
    std::shared_ptr<OAuth2Tokens> tokens_;
    // Calls on one REST client must not overlap; transfers run on connections of their own.
    std::mutex mutex_;
    RestClient client_;
};

}  // namespace stowhaven
