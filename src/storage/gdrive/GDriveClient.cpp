#include "storage/gdrive/GDriveClient.h"

#include "core/Text.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "storage/TransferFollowing.h"

#include <nlohmann/json.hpp>

namespace stowhaven {

namespace {

constexpr const char* kListFields = "nextPageToken,kind,files(id,name,mimeType,size)";
constexpr const char* kFileFields = "id,name,mimeType,size";
constexpr const char* kUploadType = "binary/octet-stream";

RestRequest requestOf(std::string method, std::string url) {
    RestRequest request;
    request.method = std::move(method);
    request.url = std::move(url);
    return request;
}

RestRequest jsonRequestOf(std::string method, std::string url, const nlohmann::json& body) {
    RestRequest request = requestOf(std::move(method), std::move(url));
    request.headers = {"Content-Type: application/json; charset=UTF-8"};
    request.text = body.dump();
    return request;
}

std::string fieldsQuery(const char* fields) { return "fields=" + textutil::percentEncoded(fields); }

}  // namespace

GDriveClient::GDriveClient(GDriveService service, AbstractStorageWrapper& errors)
    : service_(std::move(service)),
      errors_(errors),
      tokens_(std::make_shared<OAuth2Tokens>(GDriveTokens::account(service_))) {
    client_.setAuthorization(tokens_);
    client_.addSecret(service_.clientSecret.value_or(""));
}

bool GDriveClient::fail(const std::string& message) {
    SH_LOG("Failed. Error <{}>", message);
    errors_.setErrorMessage(message);
    return false;
}

bool GDriveClient::failWith(const RestReply& reply) {
    // A refused refresh tells more than the 401 it left.
    const auto tokenError = reply.status == 401 ? tokens_->lastError() : std::nullopt;
    return fail(tokenError.value_or(GDriveReplies::errorText(reply)));
}

std::optional<RestReply> GDriveClient::call(const RestRequest& request) {
    if (const auto problem = service_.problem()) {
        fail(*problem);
        return std::nullopt;
    }
    std::lock_guard lock(mutex_);
    auto reply = client_.perform(request);
    if (reply.isSuccess()) return reply;
    failWith(reply);
    return std::nullopt;
}

template <typename Reader>
auto GDriveClient::read(const RestReply& reply, Reader reader)
    -> decltype(reader(std::string_view(), std::declval<std::string&>())) {
    std::string error;
    auto value = reader(reply.body, error);
    if (!value) fail(error);
    return value;
}

std::optional<GDriveAbout> GDriveClient::about() {
    const auto reply =
        call(requestOf("GET", service_.apiUrl("/about?fields=" + textutil::percentEncoded("user,storageQuota"))));
    return reply ? read(*reply, GDriveReplies::about) : std::nullopt;
}

std::optional<std::vector<GDriveFile>> GDriveClient::list(const std::string& q) {
    std::vector<GDriveFile> files;
    std::optional<std::string> pageToken;
    do {
        std::string url = service_.apiUrl("/files?q=" + textutil::percentEncoded(q) + "&" + fieldsQuery(kListFields));
        if (pageToken) url += "&pageToken=" + textutil::percentEncoded(*pageToken);
        const auto reply = call(requestOf("GET", url));
        if (!reply) return std::nullopt;
        auto page = read(*reply, GDriveReplies::filePage);
        if (!page) return std::nullopt;
        if (page->refused > 0) SH_LOG("{} item(s) of the list refused", page->refused);
        files.insert(files.end(), page->files.begin(), page->files.end());
        // A page that lists nothing ends the walk whatever its token says.
        pageToken = page->files.empty() && page->refused == 0 ? std::nullopt : page->nextPageToken;
    } while (pageToken);
    return files;
}

std::optional<GDriveFile> GDriveClient::createFolder(const std::string& name,
                                                     const std::optional<std::string>& parentId) {
    const nlohmann::json body = {
        {"name", name}, {"mimeType", GDriveFile::kFolderType}, {"parents", {parentId.value_or("")}}};
    const auto reply = call(jsonRequestOf("POST", service_.apiUrl("/files?") + fieldsQuery(kFileFields), body));
    return reply ? read(*reply, GDriveReplies::file) : std::nullopt;
}

std::optional<std::string> GDriveClient::uploadSession(const std::string& name, const std::string& parentId,
                                                       std::int64_t size) {
    const nlohmann::json metadata = {{"name", name}, {"parents", {parentId}}, {"mimeType", kUploadType}};
    RestRequest request =
        jsonRequestOf("POST", service_.uploadUrl() + "?uploadType=resumable&" + fieldsQuery(kFileFields), metadata);
    request.headers.push_back(std::string("X-Upload-Content-Type: ") + kUploadType);
    request.headers.push_back("X-Upload-Content-Length: " + std::to_string(size));
    const auto reply = call(request);
    if (!reply) return std::nullopt;
    const auto location = reply->header("Location");
    // The session's address carries the right to write the file: only the upload host gets it.
    if (!location || !location->starts_with(service_.uploadUrl() + "?") ||
        !ServiceBase::isSecureOrLoopback(*location)) {
        fail("Google Drive gave no upload address of its own");
        return std::nullopt;
    }
    return location;
}

std::optional<GDriveFile> GDriveClient::upload(const std::string& localPath, const std::string& name,
                                               const std::string& parentId) {
    if (!FileManager::isRegularFile(localPath)) {
        fail("Path: " + localPath + " is no file to send");
        return std::nullopt;
    }
    const auto size = static_cast<std::int64_t>(FileManager::sizeOfItem(localPath));
    const auto session = uploadSession(name, parentId, size);
    if (!session) return std::nullopt;
    RestRequest request = requestOf("PUT", *session);
    request.headers = {std::string("Content-Type: ") + kUploadType};
    request.file = RestRequest::FileBody{localPath, 0, std::nullopt};
    const auto running = client_.start(std::move(request));
    if (std::string error; !followTransfer(*running, TransferDisplay::Direction::Upload, size, error)) {
        if (running->reply().status != 0) {
            failWith(running->reply());
        } else {
            fail(error);
        }
        return std::nullopt;
    }
    return read(running->reply(), GDriveReplies::file);
}

bool GDriveClient::download(const GDriveFile& file, const std::string& localPath) {
    if (const auto problem = service_.problem()) return fail(*problem);
    RestRequest request = requestOf("GET", service_.apiUrl("/files/" + file.id + "?alt=media"));
    request.downloadTo = localPath;
    const auto running = client_.start(std::move(request));
    if (std::string error;
        !followTransfer(*running, TransferDisplay::Direction::Download, file.size.value_or(0), error)) {
        return running->reply().status != 0 ? failWith(running->reply()) : fail(error);
    }
    return true;
}

bool GDriveClient::deleteFile(const std::string& id) {
    return call(requestOf("DELETE", service_.apiUrl("/files/" + id))).has_value();
}

bool GDriveClient::rename(const std::string& id, const std::string& name) {
    const nlohmann::json body = {{"name", name}};
    return call(jsonRequestOf("PATCH", service_.apiUrl("/files/" + id + "?") + fieldsQuery(kFileFields), body))
        .has_value();
}

}  // namespace stowhaven
