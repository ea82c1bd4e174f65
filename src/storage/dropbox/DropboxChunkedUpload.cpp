#include "storage/dropbox/DropboxChunkedUpload.h"

#include "core/Supervisor.h"
#include "platform/AsciiCase.h"
#include "storage/TransferFollowing.h"

#include <fmt/format.h>

#include <algorithm>

namespace stowhaven {

DropboxChunkedUpload::DropboxChunkedUpload(DropboxService& service, std::string localPath, std::int64_t size,
                                           std::string remotePath)
    : service_(service),
      localPath_(std::move(localPath)),
      size_(size),
      remotePath_(std::move(remotePath)),
      statusMessage_(Supervisor::shared().progressMessage().value_or("")),
      numberOfChunks_(std::max<std::int64_t>(1, (size + kChunkSize - 1) / kChunkSize)) {}

std::string DropboxChunkedUpload::progressText(const std::string& statusMessage, std::int64_t chunks,
                                               std::int64_t current) {
    const std::string chunkLine =
        fmt::format("{} chunks of ~{}Mb [{}/{}]", chunks, kChunkSize / 1048576, current, chunks);
    // Without a message of the job's, the line stands alone rather than under "(null)".
    return statusMessage.empty() ? chunkLine : statusMessage + "\n" + chunkLine;
}

bool DropboxChunkedUpload::sendChunk(std::string& error) {
    const std::int64_t length = std::min(kChunkSize, size_ - offset_);
    if (numberOfChunks_ > 1) {
        Supervisor::shared().notifyProgress(std::nullopt, progressText(statusMessage_, numberOfChunks_, currentChunk_));
    }
    const auto transfer = service_.startChunk(localPath_, offset_, length, uploadId_);
    std::string failure;
    const bool sent = followTransfer(*transfer, TransferDisplay::Direction::Upload, length, failure);
    const RestReply& reply = transfer->reply();
    std::string unreadable;
    const auto state = dropbox::readChunkState(reply.body, unreadable);
    // A chunk sent again after a dropped connection, that the service had taken already: it
    // says where the upload goes on.
    const bool sentAgain =
        !sent && reply.status == 400 && state && uploadId_ && state->uploadId == *uploadId_ && state->offset > offset_;
    if (!sent && !sentAgain) {
        error = reply.status != 0 ? DropboxService::errorText(reply) : failure;
        return false;
    }
    if (!state) {
        error = unreadable;
        return false;
    }
    const bool tookChunk = state->offset > offset_ || length == 0;
    if (!tookChunk || state->offset > size_ || (uploadId_ && state->uploadId != *uploadId_)) {
        error = fmt::format("The service took the chunk at {} of {} as ending at {}", offset_, size_, state->offset);
        return false;
    }
    uploadId_ = state->uploadId;
    offset_ = state->offset;
    ++currentChunk_;
    return true;
}

std::optional<dropbox::Metadata> DropboxChunkedUpload::run(std::string& error) {
    do {
        if (!sendChunk(error)) return std::nullopt;
    } while (offset_ < size_);
    const auto committed = service_.commitChunkedUpload(remotePath_, *uploadId_);
    if (committed.error) {
        error = *committed.error;
        return std::nullopt;
    }
    auto metadata = dropbox::readMetadata(committed.body, error);
    if (metadata && !equalsIgnoringAsciiCase(metadata->path, remotePath_)) {
        error = fmt::format("<{}> was stored as <{}>", remotePath_, metadata->path);
        return std::nullopt;
    }
    return metadata;
}

}  // namespace stowhaven
