#include "storage/box/BoxClient.h"

#include "core/Text.h"
#include "net/ServiceBase.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "storage/TransferFollowing.h"

#include <nlohmann/json.hpp>

namespace stowhaven {

namespace {

// The most items Box hands out in one page.
constexpr int kPageSize = 1000;

RestRequest requestOf(std::string method, std::string url) {
    RestRequest request;
    request.method = std::move(method);
    request.url = std::move(url);
    return request;
}

RestRequest jsonRequestOf(std::string method, std::string url, const nlohmann::json& body) {
    RestRequest request = requestOf(std::move(method), std::move(url));
    request.headers = {"Content-Type: application/json"};
    request.text = body.dump();
    return request;
}

}  // namespace

BoxClient::BoxClient(BoxService service, AbstractStorageWrapper& errors)
    : service_(std::move(service)),
      errors_(errors),
      tokens_(std::make_shared<OAuth2Tokens>(BoxTokens::account(service_))) {
    client_.setAuthorization(tokens_);
    client_.addSecret(service_.clientSecret.value_or(""));
}

bool BoxClient::fail(const std::string& message) {
    SH_LOG("Failed. Error <{}>", message);
    errors_.setErrorMessage(message);
    return false;
}

std::optional<RestReply> BoxClient::send(const RestRequest& request) {
    if (const auto problem = service_.problem()) {
        fail(*problem);
        return std::nullopt;
    }
    std::lock_guard lock(mutex_);
    return client_.perform(request);
}

bool BoxClient::failWith(const RestReply& reply) {
    // A refused refresh tells more than the 401 it left.
    const auto tokenError = reply.status == 401 ? tokens_->lastError() : std::nullopt;
    return fail(tokenError.value_or(BoxReplies::errorText(reply)));
}

std::optional<RestReply> BoxClient::call(const RestRequest& request) {
    auto reply = send(request);
    if (!reply || reply->isSuccess()) return reply;
    failWith(*reply);
    return std::nullopt;
}

template <typename Reader>
auto BoxClient::read(const RestReply& reply, Reader reader)
    -> decltype(reader(std::string_view(), std::declval<std::string&>())) {
    std::string error;
    auto value = reader(reply.body, error);
    if (!value) fail(error);
    return value;
}

std::optional<BoxUser> BoxClient::currentUser() {
    const auto reply = call(requestOf("GET", service_.apiUrl("/2.0/users/me")));
    return reply ? read(*reply, BoxReplies::user) : std::nullopt;
}

std::optional<BoxItem> BoxClient::folder(const std::string& id) {
    const auto reply = call(requestOf("GET", service_.apiUrl("/2.0/folders/" + id)));
    return reply ? read(*reply, BoxReplies::folder) : std::nullopt;
}

std::optional<std::vector<BoxItem>> BoxClient::folderItems(const std::string& id) {
    std::vector<BoxItem> items;
    for (std::int64_t offset = 0;;) {
        const auto reply =
            call(requestOf("GET", service_.apiUrl("/2.0/folders/" + id + "/items?fields=type,id,name&limit=" +
                                                  std::to_string(kPageSize) + "&offset=" + std::to_string(offset))));
        if (!reply) return std::nullopt;
        auto page = read(*reply, BoxReplies::itemPage);
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
    const auto reply = call(jsonRequestOf("POST", service_.apiUrl("/2.0/folders"), body));
    return reply ? read(*reply, BoxReplies::folder) : std::nullopt;
}

bool BoxClient::renameFolder(const std::string& id, const std::string& name) {
    const nlohmann::json body = {{"name", name}};
    return call(jsonRequestOf("PUT", service_.apiUrl("/2.0/folders/" + id), body)).has_value();
}

bool BoxClient::deleteItem(const std::string& id, bool isFolder) {
    const std::string path = isFolder ? "/2.0/folders/" + id + "?recursive=true" : "/2.0/files/" + id;
    return call(requestOf("DELETE", service_.apiUrl(path))).has_value();
}

std::optional<BoxItem> BoxClient::upload(const std::string& localPath, const std::string& name,
                                         const std::string& folderId) {
    if (const auto problem = service_.problem()) {
        fail(*problem);
        return std::nullopt;
    }
    if (!FileManager::isRegularFile(localPath)) {
        fail(localPath + " is no file to send");
        return std::nullopt;
    }
    const nlohmann::json attributes = {{"name", name}, {"parent", {{"id", folderId}}}};
    RestRequest request = requestOf("POST", service_.uploadUrl());
    request.multipart = RestRequest::MultipartBody{{{"attributes", attributes.dump()}}, "file", name, localPath};
    const auto size = static_cast<std::int64_t>(FileManager::sizeOfItem(localPath));
    const auto running = client_.start(std::move(request));
    if (std::string error; !followTransfer(*running, TransferDisplay::Direction::Upload, size, error)) {
        if (running->reply().status != 0) {
            failWith(running->reply());
        } else {
            fail(error);
        }
        return std::nullopt;
    }
    return read(running->reply(), BoxReplies::uploadedFile);
}

// The content's address: Box answers with a redirect to where the bytes are.
std::optional<std::string> BoxClient::downloadAddress(const std::string& id) {
    const auto reply = send(requestOf("GET", service_.apiUrl("/2.0/files/" + id + "/content")));
    if (!reply) return std::nullopt;
    const auto location = reply->header("Location");
    if (reply->code == CURLE_OK && reply->status == 302 && location) {
        if (ServiceBase::isSecureOrLoopback(*location)) return location;
        fail("Box sent the download to an address that isn't secure");
    } else if (reply->isSuccess()) {
        fail("Box gave no download address");
    } else {
        failWith(*reply);
    }
    return std::nullopt;
}

bool BoxClient::download(const std::string& id, const std::string& localPath) {
    const auto address = downloadAddress(id);
    if (!address) return false;
    RestRequest request = requestOf("GET", *address);
    request.downloadTo = localPath;
    request.anonymous = true;
    const auto running = client_.start(std::move(request));
    if (std::string error; !followTransfer(*running, TransferDisplay::Direction::Download, 0, error)) {
        return running->reply().status != 0 ? failWith(running->reply()) : fail(error);
    }
    return true;
}

}  // namespace stowhaven
