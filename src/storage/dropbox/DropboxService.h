#pragma once

#include "net/RestClient.h"
#include "storage/dropbox/DropboxApp.h"
#include "storage/dropbox/DropboxCredentials.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace stowhaven {

// The requests of the service's version 1 interface that the engine makes, each signed
// with the linked user's tokens. Paths are the account's ("/Stowhaven/iPad"), sent
// percent-encoded whole. Small requests block and are tried up to 10 times when the
// connection fails or the service is busy; transfers run on a connection of their own.
class DropboxService {
public:
    // A small request's outcome: the status and body, and on failure the error text the user
    // sees, "responseStatusCode: 404 | responseStatusMessage: HTTP 404 Not Found | Error: ...".
    struct Answer {
        long status = 0;
        std::string body;
        std::optional<std::string> error;
    };

    DropboxService(DropboxApp app, const DropboxCredentials& credentials);

    const DropboxApp& app() const { return app_; }

    Answer accountInfo();
    Answer metadata(const std::string& path);
    Answer createFolder(const std::string& path);
    Answer deletePath(const std::string& path);
    // OPERATION is "copy" or "move".
    Answer copyOrMove(const char* operation, const std::string& from, const std::string& to);

    // The file at PATH streamed to LOCALPATH, which holds nothing after a failure.
    std::unique_ptr<RestClient::RunningRequest> startDownload(const std::string& path, const std::string& localPath);
    // LENGTH bytes of LOCALPATH from OFFSET as the next chunk of an upload; the first chunk
    // has no upload id.
    std::unique_ptr<RestClient::RunningRequest> startChunk(const std::string& localPath, std::int64_t offset,
                                                           std::int64_t length,
                                                           const std::optional<std::string>& uploadId);
    // Stores the chunks sent under UPLOADID as the file PATH, never over one that exists.
    Answer commitChunkedUpload(const std::string& path, const std::string& uploadId);

    // The error text of a reply that isn't a success.
    static std::string errorText(const RestReply& reply);

private:
    Answer perform(RestRequest request);

    DropboxApp app_;
    std::mutex mutex_;
    // Guarded by mutex_: a refresh of the free space may run beside a job's request.
    RestClient client_;
};

}  // namespace stowhaven
