#pragma once

#include "net/Transfer.h"
#include "net/TransferProgress.h"

#include <curl/curl.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace stowhaven {

class CurlHandle;

// One request to a web service. At most one body: text, a file or a slice of one, or a
// multipart form whose last part is a file; the file's bytes are read as they go out, never
// held whole.
struct RestRequest {
    struct FileBody {
        std::string path;
        std::int64_t offset = 0;
        // The bytes from the offset to the end without one.
        std::optional<std::int64_t> length;
    };
    struct MultipartBody {
        // Text parts, in order ("attributes" and its JSON).
        std::vector<std::pair<std::string, std::string>> fields;
        // The file part last: its field, the file name it is sent under, the local file.
        std::string fileField;
        std::string fileName;
        std::string path;
    };

    std::string method = "GET";
    // Whole, scheme to query, already encoded.
    std::string url;
    // "Name: value" lines; the Authorization header comes from the client's RestAuthorization.
    std::vector<std::string> headers;
    std::optional<std::string> text;
    std::optional<FileBody> file;
    std::optional<MultipartBody> multipart;
    // A successful reply's body goes to this file (made afresh, removed after a failure)
    // instead of being kept as text.
    std::optional<std::string> downloadTo;
    // The largest text reply kept; a longer one fails the request.
    std::size_t replyLimit = 4 * 1024 * 1024;
    // The longest the whole request may take; none leaves only the stall limit.
    std::optional<std::chrono::seconds> timeout;
    // Tries in all, for a connection that fails or drops and for 429, 500, 502, 503 and
    // 504 replies (after their Retry-After); none takes the client's.
    std::optional<int> attempts;
    // Sent without the Authorization header (a token request).
    bool anonymous = false;

    // METHOD to URL, without a body.
    static RestRequest of(std::string method, std::string url);
    // METHOD to URL with the JSON text as its body, announced as CONTENTTYPE.
    static RestRequest ofJson(std::string method, std::string url, std::string json,
                              const char* contentType = "application/json");
};

struct RestReply {
    // CURLE_OK when a whole reply came, whatever its status.
    CURLcode code = CURLE_OK;
    long status = 0;
    std::string body;
    // The final reply's headers, names as sent.
    std::vector<std::pair<std::string, std::string>> headers;
    // What went wrong, one printable line, never a token: "HTTP 409 Conflict", or what the
    // connection did. Empty on success.
    std::string error;

    bool isSuccess() const { return code == CURLE_OK && status >= 200 && status < 300; }
    // The first header of that name, regardless of case.
    std::optional<std::string> header(std::string_view name) const;
    // The wait that a Retry-After of whole seconds asks for; none without one or for any other
    // form of it.
    std::optional<std::chrono::seconds> retryAfter() const;
    // A connection refused, dropped or silent, which a new try may get past; a reply too large
    // or a file that can't be written would fail again.
    bool isDroppedConnection() const;
};

// Where the Authorization header of a service's requests comes from.
class RestAuthorization {
public:
    virtual ~RestAuthorization() = default;
    // The header's value ("Bearer ..."); none sends the request without one.
    virtual std::optional<std::string> header() = 0;
    // After a 401: gets fresh credentials, once per request; false when it can't, and the
    // 401 stands.
    virtual bool refresh() { return false; }
};

struct RetryPolicy {
    // Tries in all for a request that doesn't name its own.
    int attempts = 3;
    // Retry-After is followed up to this; without one, a second, then twice as long each time.
    std::chrono::seconds longestWait{30};
};

// The HTTP client of the cloud engines, on libcurl: one connection kept between calls,
// redirects never followed, nothing but http and https spoken. A request blocks its caller;
// a cancel (the progress's abortRequested) ends it, a wait for a retry included. Calls on
// one client must not overlap; a transfer started with start() has a connection of its own.
class RestClient {
public:
    explicit RestClient(RetryPolicy policy = {});
    ~RestClient();
    RestClient(const RestClient&) = delete;
    RestClient& operator=(const RestClient&) = delete;

    void setAuthorization(std::shared_ptr<RestAuthorization> authorization);
    // Secret texts (a token, an app secret) masked in every error and log line.
    void addSecret(std::string secret);

    RestReply perform(const RestRequest& request, TransferProgress* progress = nullptr);
    // The request on a thread of its own, followed by the caller as any transfer; the reply
    // is read once it has finished.
    class RunningRequest : public Transfer {
    public:
        virtual const RestReply& reply() const = 0;
    };
    std::unique_ptr<RunningRequest> start(RestRequest request);

    // Waits WAIT unless ISCANCELED turns true first, asked every few milliseconds; false when
    // a cancel ended the wait.
    static bool waitUnlessCanceled(std::chrono::milliseconds wait, const std::function<bool()>& isCanceled);

private:
    struct Shared;
    std::shared_ptr<Shared> shared_;
    std::unique_ptr<CurlHandle> handle_;
};

}  // namespace stowhaven
