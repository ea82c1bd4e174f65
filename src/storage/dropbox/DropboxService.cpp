#include "storage/dropbox/DropboxService.h"

#include "core/Text.h"
#include "storage/dropbox/DropboxReplies.h"

#include <fmt/format.h>

#include <chrono>

namespace stowhaven {

namespace {

// The tries of a small request or a download. The chunked upload is tried once: the
// upload as a whole is what the engine tries again.
constexpr int kAttempts = 10;
constexpr std::chrono::seconds kCommitTimeout{20};

std::string encoded(const std::string& path) { return textutil::percentEncoded(path); }

RestRequest request(const char* method, std::string url) {
    RestRequest request;
    request.method = method;
    request.url = std::move(url);
    request.attempts = kAttempts;
    return request;
}

}  // namespace

DropboxService::DropboxService(DropboxApp app, const DropboxCredentials& credentials) : app_(std::move(app)) {
    client_.setAuthorization(std::make_shared<DropboxAuthorization>(app_, credentials));
    client_.addSecret(app_.secret);
    client_.addSecret(credentials.token);
    client_.addSecret(credentials.tokenSecret);
}

std::string DropboxService::errorText(const RestReply& reply) {
    return fmt::format("responseStatusCode: {} | responseStatusMessage: {} | Error: {}", reply.status, reply.error,
                       dropbox::readError(reply.body).value_or(reply.error));
}

DropboxService::Answer DropboxService::perform(RestRequest request) {
    RestReply reply;
    {
        std::lock_guard lock(mutex_);
        reply = client_.perform(request);
    }
    Answer answer{reply.status, {}, std::nullopt};
    if (!reply.isSuccess()) answer.error = errorText(reply);
    answer.body = std::move(reply.body);
    return answer;
}

DropboxService::Answer DropboxService::accountInfo() {
    return perform(request("GET", app_.apiHost + "/1/account/info"));
}

DropboxService::Answer DropboxService::metadata(const std::string& path) {
    return perform(request("GET", app_.apiHost + "/1/metadata/dropbox/" + encoded(path)));
}

DropboxService::Answer DropboxService::createFolder(const std::string& path) {
    return perform(request("POST", app_.apiHost + "/1/fileops/create_folder?root=dropbox&path=" + encoded(path)));
}

DropboxService::Answer DropboxService::deletePath(const std::string& path) {
    return perform(request("POST", app_.apiHost + "/1/fileops/delete?root=dropbox&path=" + encoded(path)));
}

DropboxService::Answer DropboxService::copyOrMove(const char* operation, const std::string& from,
                                                  const std::string& to) {
    return perform(request("POST", fmt::format("{}/1/fileops/{}?root=dropbox&from_path={}&to_path={}", app_.apiHost,
                                               operation, encoded(from), encoded(to))));
}

std::unique_ptr<RestClient::RunningRequest> DropboxService::startDownload(const std::string& path,
                                                                          const std::string& localPath) {
    RestRequest download = request("GET", app_.contentHost + "/1/files/dropbox/" + encoded(path));
    download.downloadTo = localPath;
    return client_.start(std::move(download));
}

std::unique_ptr<RestClient::RunningRequest> DropboxService::startChunk(const std::string& localPath,
                                                                       std::int64_t offset, std::int64_t length,
                                                                       const std::optional<std::string>& uploadId) {
    std::string url = app_.contentHost + "/1/chunked_upload";
    if (uploadId) url += fmt::format("?upload_id={}&offset={}", encoded(*uploadId), offset);
    RestRequest chunk = request("POST", std::move(url));
    chunk.attempts = 1;
    chunk.headers.push_back("Content-Type: application/octet-stream");
    chunk.file = RestRequest::FileBody{localPath, offset, length};
    return client_.start(std::move(chunk));
}

DropboxService::Answer DropboxService::commitChunkedUpload(const std::string& path, const std::string& uploadId) {
    RestRequest commit =
        request("POST", fmt::format("{}/1/commit_chunked_upload/dropbox/{}?overwrite=false&upload_id={}&locale=en",
                                    app_.contentHost, encoded(path), encoded(uploadId)));
    commit.attempts = 1;
    commit.timeout = kCommitTimeout;
    return perform(std::move(commit));
}

}  // namespace stowhaven
