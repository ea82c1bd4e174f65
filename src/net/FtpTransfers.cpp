#include "net/FtpTransfers.h"

#include "net/FileBodies.h"
#include "net/FtpPaths.h"
#include "net/FtpRequest.h"
#include "platform/FileDescriptor.h"
#include "platform/Log.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace stowhaven::FtpTransfers {

namespace {

// Large writes to the data connection: the upload runs as fast as curl's own tool.
constexpr long kUploadBufferBytes = 256 * 1024;

TransferOutcome failed(std::string error) { return {false, std::move(error)}; }

}  // namespace

TransferOutcome upload(CurlHandle& handle, const FtpAccount& account, const std::string& localPath,
                       const std::string& remotePath, TransferProgress& progress) {
    std::int64_t size = 0;
    std::string error;
    FileDescriptor file = FileBodies::openToSend(localPath, size, error);
    if (!file.isOpen()) return failed(error);

    FtpRequest::prepare(handle, account, FtpPaths::url(handle.get(), account, remotePath, false));
    handle.set(CURLOPT_UPLOAD, 1L);
    handle.set(CURLOPT_UPLOAD_BUFFERSIZE, kUploadBufferBytes);
    handle.set(CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(size));
    handle.set(CURLOPT_READFUNCTION, &FileBodies::readFromFile);
    handle.set(CURLOPT_READDATA, &file);
    if (const CURLcode code = handle.perform(&progress); code != CURLE_OK) {
        SH_LOG("Upload of {} to {} failed: {}", localPath, remotePath, handle.dialogue().tail());
        return failed(FtpRequest::failure(handle, code));
    }
    const auto stored = remoteSize(handle, account, remotePath, error);
    if (!stored) return failed(error);
    if (*stored != size) {
        SH_LOG("The server holds {} bytes of {} for the {} sent", *stored, remotePath, size);
        return failed(fmt::format("the server holds {} bytes of the {} sent", *stored, size));
    }
    return {true, ""};
}

TransferOutcome download(CurlHandle& handle, const FtpAccount& account, const std::string& remotePath,
                         const std::string& localPath, TransferProgress& progress) {
    std::string error;
    FileDescriptor file = FileBodies::openToReceive(localPath, error);
    if (!file.isOpen()) return failed(error);

    FtpRequest::prepare(handle, account, FtpPaths::url(handle.get(), account, remotePath, false));
    handle.set(CURLOPT_WRITEFUNCTION, &FileBodies::writeToFile);
    handle.set(CURLOPT_WRITEDATA, &file);
    const CURLcode code = handle.perform(&progress);
    if (code == CURLE_OK && ::fsync(file.get()) == 0) return {true, ""};
    SH_LOG("Download of {} to {} failed: {}", remotePath, localPath, handle.dialogue().tail());
    ::unlink(localPath.c_str());
    return failed(code == CURLE_OK ? "can't write " + localPath + ": " + std::strerror(errno)
                                   : FtpRequest::failure(handle, code));
}

std::optional<std::int64_t> remoteSize(CurlHandle& handle, const FtpAccount& account, const std::string& path,
                                       std::string& error) {
    FtpRequest::prepare(handle, account, FtpPaths::url(handle.get(), account, path, false));
    handle.set(CURLOPT_NOBODY, 1L);
    const CURLcode code = handle.perform();
    curl_off_t size = -1;
    if (code == CURLE_OK) curl_easy_getinfo(handle.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &size);
    if (code == CURLE_OK && size >= 0) return size;
    error = code == CURLE_OK
                ? FtpRequest::refusal(handle).value_or(handle.dialogue().clean("the server gave no size for " + path))
                : FtpRequest::failure(handle, code);
    SH_LOG("No size of {}: {}", path, error);
    return std::nullopt;
}

}  // namespace stowhaven::FtpTransfers
