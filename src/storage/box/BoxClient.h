#pragma once

#include "storage/AbstractStorageWrapper.h"
#include "storage/OAuth2ServiceClient.h"
#include "storage/box/BoxReplies.h"
#include "storage/box/BoxService.h"
#include "storage/box/BoxTokens.h"

#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// The requests of the Box API that the engine makes, everything addressed by id. Each blocks
// until it is done; on failure it leaves the service's message as the engine's error
// (ERRORS) and answers none or false.
class BoxClient {
public:
    BoxClient(BoxService service, AbstractStorageWrapper& errors);

    OAuth2Tokens& tokens() { return rest_.tokens(); }
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
    std::optional<std::string> downloadAddress(const std::string& id);

    BoxService service_;
    OAuth2ServiceClient rest_;
};

}  // namespace stowhaven
