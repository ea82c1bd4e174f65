#pragma once

#include "net/CurlHandle.h"
#include "platform/FileDescriptor.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace stowhaven {

// What came back for one HTTP request.
struct HttpReply {
    // CURLE_OK when a whole reply came, whatever its status.
    CURLcode code = CURLE_OK;
    long status = 0;
    // "Not Found": the status line's words after the code, as the server sent them.
    std::string reason;
    // The body, when it was to be kept (keepBody).
    std::string body;
    // The body went past keepBody's limit, and the request was ended there.
    bool bodyTooLarge = false;
    // The final reply's header lines, as (name, value), names as sent.
    std::vector<std::pair<std::string, std::string>> headers;

    bool isSuccess() const { return code == CURLE_OK && status >= 200 && status < 300; }
};

// One HTTP request on a CurlHandle: a method, headers, a body from text or from a file (with
// its Content-Length), and the reply's body kept as text up to a limit, written to a file, or
// dropped. Redirects are never followed: a 3xx comes back as it is. Nothing but http and
// https is spoken.
class HttpRequest {
public:
    HttpRequest(CurlHandle& handle, const std::string& method, const std::string& url);
    ~HttpRequest();
    HttpRequest(const HttpRequest&) = delete;
    HttpRequest& operator=(const HttpRequest&) = delete;

    // Basic authentication on this request, the credentials in headers, never in the URL.
    void authenticate(const std::string& login, const std::string& password);
    // Takes any certificate the server shows, a self-signed one included.
    void acceptAnyCertificate();
    // LINE as "Name: value".
    void addHeader(const std::string& line);
    // The request ends when it moves less than a byte a second for this long, whether the
    // body is still going or the server is still to answer.
    void setStalledSeconds(long seconds);

    void sendText(std::string body);
    // The file's bytes as the body, Content-Length its size; false with ERROR when it can't
    // be read.
    bool sendFile(const std::string& path, std::string& error);
    // LENGTH bytes of the file from OFFSET (to its end without a length), read as they go out.
    bool sendFileSlice(const std::string& path, std::int64_t offset, std::optional<std::int64_t> length,
                       std::string& error);
    // A multipart/form-data body: the text FIELDS, then the file as the part FILEFIELD under
    // FILENAME, read as it goes out. False with ERROR when the file can't be read.
    bool sendMultipart(const std::vector<std::pair<std::string, std::string>>& fields, const std::string& fileField,
                       const std::string& fileName, const std::string& path, std::string& error);
    // The longest the whole request may take.
    void setTimeoutSeconds(long seconds);
    // Keeps the reply's body in HttpReply::body; a longer one ends the request.
    void keepBody(std::size_t limit);
    // Writes the body of a successful reply (2xx) to PATH; the file is removed when the
    // request fails, so that nothing is left there. False with ERROR when it can't be made.
    bool receiveFile(const std::string& path, std::string& error);

    HttpReply perform(TransferProgress* progress = nullptr);

private:
    static std::size_t keepText(char* data, std::size_t size, std::size_t count, void* self);
    static std::size_t writeWhenSuccessful(char* data, std::size_t size, std::size_t count, void* self);
    static std::size_t readSlice(char* buffer, std::size_t size, std::size_t count, void* self);
    static std::size_t keepHeader(char* data, std::size_t size, std::size_t count, void* self);
    bool isReplySuccessful() const;

    CurlHandle& handle_;
    curl_slist* headers_ = nullptr;
    std::string textBody_;
    FileDescriptor sentFile_;
    std::int64_t sentBytesLeft_ = 0;
    curl_mime* form_ = nullptr;
    FileDescriptor receivedFile_;
    std::string receivedPath_;
    std::size_t bodyLimit_ = 0;
    HttpReply reply_;
};

}  // namespace stowhaven
