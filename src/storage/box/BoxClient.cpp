#include "storage/box/BoxClient.h"

#include "core/Text.h"
#include "net/ServiceBase.h"
#include "platform/FileManager.h"
#include "platform/Log.h"

#include <nlohmann/json.hpp>

namespace stowhaven {

namespace {

// The most items Box hands out in one page.
constexpr int kPageSize = 1000;

}  // namespace

BoxClient::BoxClient(BoxService service, AbstractStorageWrapper& errors)
    : service_(std::move(service)), rest_(BoxTokens::account(service_), errors, BoxReplies::errorText) {}

std::optional<BoxUser> BoxClient::currentUser() {
    const auto reply = rest_.call(RestRequest::of("GET", service_.apiUrl("/2.0/users/me")));
    return reply ? rest_.read(*reply, BoxReplies::user) : std::nullopt;
}

std::optional<BoxItem> BoxClient::folder(const std::string& id) {
    const auto reply = rest_.call(RestRequest::of("GET", service_.apiUrl("/2.0/folders/" + id)));
    return reply ? rest_.read(*reply, BoxReplies::folder) : std::nullopt;
}

std::optional<std::vector<BoxItem>> BoxClient::folderItems(const std::string& id) {
    std::vector<BoxItem> items;
    for (std::int64_t offset = 0;;) {
        const auto reply = rest_.call(
            RestRequest::of("GET", service_.apiUrl("/2.0/folders/" + id + "/items?fields=type,id,name&limit=" +
                                                   std::to_string(kPageSize) + "&offset=" + std::to_string(offset))));
        if (!reply) return std::nullopt;
        auto page = rest_.read(*reply, BoxReplies::itemPage);
        if (!page) return std::nullopt;
        const auto listed = static_cast<std::int64_t>(page->entries.size() + page->refused);
        if (page->refused > 0) SH_LOG("{} item(s) of folder {} refused", page->refused, id);
        items.insert(items.end(), page->entries.begin(), page->entries.end());
        offset += listed;
        // An empty page ends the walk whatever the total says.
        if (listed == 0 || offset >= page->totalCount) return items;
    }
}

std::optional<BoxItem> BoxClient::createFolder(const std::string& name, const std::string& parentId) {
    const nlohmann::json body = {{"name", name}, {"parent", {{"id", parentId}}}};
    const auto reply = rest_.call(RestRequest::ofJson("POST", service_.apiUrl("/2.0/folders"), body.dump()));
    return reply ? rest_.read(*reply, BoxReplies::folder) : std::nullopt;
}

bool BoxClient::renameFolder(const std::string& id, const std::string& name) {
    const nlohmann::json body = {{"name", name}};
    return rest_.call(RestRequest::ofJson("PUT", service_.apiUrl("/2.0/folders/" + id), body.dump())).has_value();
}

bool BoxClient::deleteItem(const std::string& id, bool isFolder) {
    const std::string path = isFolder ? "/2.0/folders/" + id + "?recursive=true" : "/2.0/files/" + id;
    return rest_.call(RestRequest::of("DELETE", service_.apiUrl(path))).has_value();
}

std::optional<BoxItem> BoxClient::upload(const std::string& localPath, const std::string& name,
                                         const std::string& folderId) {
    if (const auto problem = service_.problem()) {
        rest_.fail(*problem);
        return std::nullopt;
    }
    if (!FileManager::isRegularFile(localPath)) {
        rest_.fail(localPath + " is no file to send");
        return std::nullopt;
    }
    const nlohmann::json attributes = {{"name", name}, {"parent", {{"id", folderId}}}};
    RestRequest request = RestRequest::of("POST", service_.uploadUrl());
    request.multipart = RestRequest::MultipartBody{{{"attributes", attributes.dump()}}, "file", name, localPath};
    const auto size = static_cast<std::int64_t>(FileManager::sizeOfItem(localPath));
    const auto reply = rest_.transfer(std::move(request), TransferDisplay::Direction::Upload, size);
    return reply ? rest_.read(*reply, BoxReplies::uploadedFile) : std::nullopt;
}

// The content's address: Box answers with a redirect to where the bytes are.
std::optional<std::string> BoxClient::downloadAddress(const std::string& id) {
    const auto reply = rest_.send(RestRequest::of("GET", service_.apiUrl("/2.0/files/" + id + "/content")));
    if (!reply) return std::nullopt;
    const auto location = reply->header("Location");
    if (reply->code == CURLE_OK && reply->status == 302 && location) {
        if (ServiceBase::isSecureOrLoopback(*location)) return location;
        rest_.fail("Box sent the download to an address that isn't secure");
    } else if (reply->isSuccess()) {
        rest_.fail("Box gave no download address");
    } else {
        rest_.failWith(*reply);
    }
    return std::nullopt;
}

bool BoxClient::download(const std::string& id, const std::string& localPath) {
    const auto address = downloadAddress(id);
    if (!address) return false;
    RestRequest request = RestRequest::of("GET", *address);
    request.downloadTo = localPath;
    request.anonymous = true;
    return rest_.transfer(std::move(request), TransferDisplay::Direction::Download, 0).has_value();
}

}  // namespace stowhaven
