#include "storage/gdrive/GDriveClient.h"

#include "core/Text.h"
#include "platform/FileManager.h"
#include "platform/Log.h"

#include <nlohmann/json.hpp>

namespace stowhaven {

namespace {

constexpr const char* kListFields = "nextPageToken,kind,files(id,name,mimeType,size)";
constexpr const char* kFileFields = "id,name,mimeType,size";
constexpr const char* kUploadType = "binary/octet-stream";

RestRequest jsonRequest(std::string method, std::string url, const nlohmann::json& body) {
    return RestRequest::ofJson(std::move(method), std::move(url), body.dump(), "application/json; charset=UTF-8");
}

std::string fieldsQuery(const char* fields) { return "fields=" + textutil::percentEncoded(fields); }

}  // namespace

GDriveClient::GDriveClient(GDriveService service, AbstractStorageWrapper& errors)
    : service_(std::move(service)), rest_(GDriveTokens::account(service_), errors, GDriveReplies::errorText) {}

std::optional<GDriveAbout> GDriveClient::about() {
    const auto reply = rest_.call(
        RestRequest::of("GET", service_.apiUrl("/about?fields=" + textutil::percentEncoded("user,storageQuota"))));
    return reply ? rest_.read(*reply, GDriveReplies::about) : std::nullopt;
}

std::optional<std::vector<GDriveFile>> GDriveClient::list(const std::string& q) {
    std::vector<GDriveFile> files;
    std::optional<std::string> pageToken;
    do {
        std::string url = service_.apiUrl("/files?q=" + textutil::percentEncoded(q) + "&" + fieldsQuery(kListFields));
        if (pageToken) url += "&pageToken=" + textutil::percentEncoded(*pageToken);
        const auto reply = rest_.call(RestRequest::of("GET", url));
        if (!reply) return std::nullopt;
        auto page = rest_.read(*reply, GDriveReplies::filePage);
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
    const auto reply = rest_.call(jsonRequest("POST", service_.apiUrl("/files?") + fieldsQuery(kFileFields), body));
    return reply ? rest_.read(*reply, GDriveReplies::file) : std::nullopt;
}

std::optional<std::string> GDriveClient::uploadSession(const std::string& name, const std::string& parentId,
                                                       std::int64_t size) {
    const nlohmann::json metadata = {{"name", name}, {"parents", {parentId}}, {"mimeType", kUploadType}};
    RestRequest request =
        jsonRequest("POST", service_.uploadUrl() + "?uploadType=resumable&" + fieldsQuery(kFileFields), metadata);
    request.headers.push_back(std::string("X-Upload-Content-Type: ") + kUploadType);
    request.headers.push_back("X-Upload-Content-Length: " + std::to_string(size));
    const auto reply = rest_.call(request);
    if (!reply) return std::nullopt;
    const auto location = reply->header("Location");
    // The session's address carries the right to write the file: only the upload host gets it.
    if (!location || !location->starts_with(service_.uploadUrl() + "?") ||
        !ServiceBase::isSecureOrLoopback(*location)) {
        rest_.fail("Google Drive gave no upload address of its own");
        return std::nullopt;
    }
    return location;
}

std::optional<GDriveFile> GDriveClient::upload(const std::string& localPath, const std::string& name,
                                               const std::string& parentId) {
    if (!FileManager::isRegularFile(localPath)) {
        rest_.fail("Path: " + localPath + " is no file to send");
        return std::nullopt;
    }
    const auto size = static_cast<std::int64_t>(FileManager::sizeOfItem(localPath));
    const auto session = uploadSession(name, parentId, size);
    if (!session) return std::nullopt;
    RestRequest request = RestRequest::of("PUT", *session);
    request.headers = {std::string("Content-Type: ") + kUploadType};
    request.file = RestRequest::FileBody{localPath, 0, std::nullopt};
    const auto reply = rest_.transfer(std::move(request), TransferDisplay::Direction::Upload, size);
    return reply ? rest_.read(*reply, GDriveReplies::file) : std::nullopt;
}

bool GDriveClient::download(const GDriveFile& file, const std::string& localPath) {
    if (const auto problem = service_.problem()) return rest_.fail(*problem);
    RestRequest request = RestRequest::of("GET", service_.apiUrl("/files/" + file.id + "?alt=media"));
    request.downloadTo = localPath;
    return rest_.transfer(std::move(request), TransferDisplay::Direction::Download, file.size.value_or(0)).has_value();
}

bool GDriveClient::deleteFile(const std::string& id) {
    return rest_.call(RestRequest::of("DELETE", service_.apiUrl("/files/" + id))).has_value();
}

bool GDriveClient::rename(const std::string& id, const std::string& name) {
    const nlohmann::json body = {{"name", name}};
    return rest_.call(jsonRequest("PATCH", service_.apiUrl("/files/" + id + "?") + fieldsQuery(kFileFields), body))
        .has_value();
}

}  // namespace stowhaven
