#include "net/HttpRequest.h"

#include "net/FileBodies.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace stowhaven {

namespace {

// Large writes to the connection: an upload runs as fast as curl's own tool.
constexpr long kUploadBufferBytes = 256 * 1024;
// A server that sends header lines without end is heard no further.
constexpr std::size_t kMostHeaders = 128;

std::size_t discard(char*, std::size_t size, std::size_t count, void*) { return size * count; }

// "Not Found" of the last status line the server sent ("HTTP/1.1 404 Not Found"); a
// "100 Continue" before the final answer doesn't count, as a later line replaces it.
std::string reasonOfLastStatus(const std::deque<std::string>& lines) {
    for (auto line = lines.rbegin(); line != lines.rend(); ++line) {
        if (!line->starts_with("HTTP/")) continue;
        const auto code = line->find(' ');
        const auto reason = code == std::string::npos ? std::string::npos : line->find(' ', code + 1);
        return reason == std::string::npos ? "" : line->substr(reason + 1);
    }
    return "";
}

}  // namespace

HttpRequest::HttpRequest(CurlHandle& handle, const std::string& method, const std::string& url) : handle_(handle) {
    handle_.reset();
    handle_.set(CURLOPT_URL, url.c_str());
    handle_.set(CURLOPT_PROTOCOLS_STR, "http,https");
    handle_.set(CURLOPT_FOLLOWLOCATION, 0L);
    if (method != "GET") handle_.set(CURLOPT_CUSTOMREQUEST, method.c_str());
    handle_.set(CURLOPT_WRITEFUNCTION, &discard);
    handle_.set(CURLOPT_HEADERFUNCTION, &HttpRequest::keepHeader);
    handle_.set(CURLOPT_HEADERDATA, this);
}

HttpRequest::~HttpRequest() {
    // The handle keeps pointers to what goes with this request until its next reset.
    handle_.reset();
    curl_slist_free_all(headers_);
    curl_mime_free(form_);
}

void HttpRequest::authenticate(const std::string& login, const std::string& password) {
    handle_.set(CURLOPT_HTTPAUTH, static_cast<long>(CURLAUTH_BASIC));
    handle_.set(CURLOPT_USERNAME, login.c_str());
    handle_.set(CURLOPT_PASSWORD, password.c_str());
}

void HttpRequest::acceptAnyCertificate() {
    handle_.set(CURLOPT_SSL_VERIFYPEER, 0L);
    handle_.set(CURLOPT_SSL_VERIFYHOST, 0L);
}

void HttpRequest::addHeader(const std::string& line) {
    headers_ = curl_slist_append(headers_, line.c_str());
    handle_.set(CURLOPT_HTTPHEADER, headers_);
}

void HttpRequest::setStalledSeconds(long seconds) { handle_.set(CURLOPT_LOW_SPEED_TIME, seconds); }

void HttpRequest::sendText(std::string body) {
    textBody_ = std::move(body);
    handle_.set(CURLOPT_POSTFIELDS, textBody_.c_str());
    handle_.set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(textBody_.size()));
}

bool HttpRequest::sendFile(const std::string& path, std::string& error) {
    return sendFileSlice(path, 0, std::nullopt, error);
}

bool HttpRequest::sendFileSlice(const std::string& path, std::int64_t offset, std::optional<std::int64_t> length,
                                std::string& error) {
    std::int64_t size = 0;
    sentFile_ = FileBodies::openToSend(path, size, error);
    if (!sentFile_.isOpen()) return false;
    if (offset < 0 || offset > size || (length && (*length < 0 || *length > size - offset))) {
        error = "can't read " + path + ": the part asked for lies outside the file";
        return false;
    }
    if (::lseek(sentFile_.get(), offset, SEEK_SET) != offset) {
        error = "can't read " + path + ": " + std::strerror(errno);
        return false;
    }
    sentBytesLeft_ = length.value_or(size - offset);
    handle_.set(CURLOPT_UPLOAD, 1L);
    handle_.set(CURLOPT_UPLOAD_BUFFERSIZE, kUploadBufferBytes);
    handle_.set(CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(sentBytesLeft_));
    handle_.set(CURLOPT_READFUNCTION, &HttpRequest::readSlice);
    handle_.set(CURLOPT_READDATA, this);
    return true;
}

bool HttpRequest::sendMultipart(const std::vector<std::pair<std::string, std::string>>& fields,
                                const std::string& fileField, const std::string& fileName, const std::string& path,
                                std::string& error) {
    std::int64_t size = 0;
    // Proved a regular file here; the form opens it again as it sends it.
    if (!FileBodies::openToSend(path, size, error).isOpen()) return false;
    form_ = curl_mime_init(handle_.get());
    for (const auto& [name, value] : fields) {
        curl_mimepart* part = curl_mime_addpart(form_);
        curl_mime_name(part, name.c_str());
        curl_mime_data(part, value.data(), value.size());
    }
    curl_mimepart* file = curl_mime_addpart(form_);
    curl_mime_name(file, fileField.c_str());
    if (curl_mime_filedata(file, path.c_str()) != CURLE_OK) {
        error = "can't read " + path;
        return false;
    }
    curl_mime_filename(file, fileName.c_str());
    curl_mime_type(file, "application/octet-stream");
    handle_.set(CURLOPT_MIMEPOST, form_);
    return true;
}

void HttpRequest::setTimeoutSeconds(long seconds) { handle_.set(CURLOPT_TIMEOUT, seconds); }

void HttpRequest::keepBody(std::size_t limit) {
    bodyLimit_ = limit;
    handle_.set(CURLOPT_WRITEFUNCTION, &HttpRequest::keepText);
    handle_.set(CURLOPT_WRITEDATA, this);
}

bool HttpRequest::receiveFile(const std::string& path, std::string& error) {
    receivedFile_ = FileBodies::openToReceive(path, error);
    if (!receivedFile_.isOpen()) return false;
    receivedPath_ = path;
    handle_.set(CURLOPT_WRITEFUNCTION, &HttpRequest::writeWhenSuccessful);
    handle_.set(CURLOPT_WRITEDATA, this);
    return true;
}

HttpReply HttpRequest::perform(TransferProgress* progress) {
    reply_.code = handle_.perform(progress);
    curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &reply_.status);
    reply_.reason = reasonOfLastStatus(handle_.dialogue().replies());
    if (receivedFile_.isOpen()) {
        if (reply_.isSuccess() && ::fsync(receivedFile_.get()) != 0) reply_.code = CURLE_WRITE_ERROR;
        if (!reply_.isSuccess()) ::unlink(receivedPath_.c_str());
    }
    return std::move(reply_);
}

std::size_t HttpRequest::keepText(char* data, std::size_t size, std::size_t count, void* self) {
    auto& request = *static_cast<HttpRequest*>(self);
    if (request.reply_.body.size() + size * count > request.bodyLimit_) {
        request.reply_.bodyTooLarge = true;
        return 0;
    }
    request.reply_.body.append(data, size * count);
    return size * count;
}

std::size_t HttpRequest::readSlice(char* buffer, std::size_t size, std::size_t count, void* self) {
    auto& request = *static_cast<HttpRequest*>(self);
    const auto wanted = static_cast<std::size_t>(std::min<std::int64_t>(request.sentBytesLeft_, size * count));
    if (wanted == 0) return 0;
    const std::size_t done = FileBodies::readFromFile(buffer, 1, wanted, &request.sentFile_);
    if (done == CURL_READFUNC_ABORT) return done;
    request.sentBytesLeft_ -= static_cast<std::int64_t>(done);
    return done;
}

// Each reply's header lines; a status line starts a reply afresh, so that those of a
// "100 Continue" don't stay.
std::size_t HttpRequest::keepHeader(char* data, std::size_t size, std::size_t count, void* self) {
    auto& headers = static_cast<HttpRequest*>(self)->reply_.headers;
    std::string_view line(data, size * count);
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
    if (line.starts_with("HTTP/")) {
        headers.clear();
    } else if (const auto colon = line.find(':');
               colon != std::string_view::npos && colon > 0 && headers.size() < kMostHeaders) {
        std::string_view value = line.substr(colon + 1);
        while (!value.empty() && (value.front() == ' ' || value.front() == '\t')) value.remove_prefix(1);
        headers.emplace_back(std::string(line.substr(0, colon)), std::string(value));
    }
    return size * count;
}

bool HttpRequest::isReplySuccessful() const {
    long status = 0;
    curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &status);
    return status >= 200 && status < 300;
}

std::size_t HttpRequest::writeWhenSuccessful(char* data, std::size_t size, std::size_t count, void* self) {
    auto& request = *static_cast<HttpRequest*>(self);
    // The page of a refusal is no part of the file.
    if (!request.isReplySuccessful()) return size * count;
    return FileBodies::writeToFile(data, size, count, &request.receivedFile_);
}

}  // namespace stowhaven
