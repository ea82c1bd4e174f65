#pragma once

#include "storage/dropbox/DropboxReplies.h"
#include "storage/dropbox/DropboxService.h"

#include <cstdint>
#include <optional>
#include <string>

namespace stowhaven {

// One file sent in chunks of 10 MB, each read from the file at its offset, then committed
// under its path, never over a file that is there. The bar runs once per chunk; with more
// than one chunk the progress text tells which chunk is on its way. A chunk that fails ends
// the upload: the engine tries the whole upload again.
class DropboxChunkedUpload {
public:
    static constexpr std::int64_t kChunkSize = 10485760;

    DropboxChunkedUpload(DropboxService& service, std::string localPath, std::int64_t size, std::string remotePath);

    // The stored file's metadata; none, with the error text, when the upload failed.
    std::optional<dropbox::Metadata> run(std::string& error);

    // "<status>\n2 chunks of ~10Mb [1/2]": the job's text, then the chunk on its way.
    static std::string progressText(const std::string& statusMessage, std::int64_t chunks, std::int64_t current);

private:
    // Sends the chunk at offset_; false, with the error, when it didn't go.
    bool sendChunk(std::string& error);

    DropboxService& service_;
    std::string localPath_;
    std::int64_t size_;
    std::string remotePath_;
    std::string statusMessage_;
    std::int64_t numberOfChunks_;
    std::int64_t currentChunk_ = 1;
    std::int64_t offset_ = 0;
    std::optional<std::string> uploadId_;
};

}  // namespace stowhaven
