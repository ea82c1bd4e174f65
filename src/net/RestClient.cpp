#include "net/RestClient.h"

#include "net/CurlHandle.h"
#include "net/HttpRequest.h"
#include "net/ThreadedTransfer.h"
#include "platform/AsciiCase.h"

#include <algorithm>
#include <charconv>
#include <mutex>
#include <thread>

namespace stowhaven {

namespace {

// How often a wait between two tries looks for a cancel.
constexpr auto kCancelPoll = std::chrono::milliseconds(20);

bool isRetriedStatus(long status) {
    return status == 429 || status == 500 || status == 502 || status == 503 || status == 504;
}

}  // namespace

RestRequest RestRequest::of(std::string method, std::string url) {
    RestRequest request;
    request.method = std::move(method);
    request.url = std::move(url);
    return request;
}

RestRequest RestRequest::ofJson(std::string method, std::string url, std::string json, const char* contentType) {
    RestRequest request = of(std::move(method), std::move(url));
    request.headers = {std::string("Content-Type: ") + contentType};
    request.text = std::move(json);
    return request;
}

std::optional<std::string> RestReply::header(std::string_view name) const {
    for (const auto& [key, value] : headers) {
        if (equalsIgnoringAsciiCase(key, name)) return value;
    }
    return std::nullopt;
}

std::optional<std::chrono::seconds> RestReply::retryAfter() const {
    const auto value = header("Retry-After");
    if (!value) return std::nullopt;
    long seconds = 0;
    const auto [end, failure] = std::from_chars(value->data(), value->data() + value->size(), seconds);
    if (failure != std::errc() || end != value->data() + value->size() || seconds < 0) return std::nullopt;
    return std::chrono::seconds(seconds);
}

bool RestReply::isDroppedConnection() const {
    switch (code) {
        case CURLE_COULDNT_CONNECT:
        case CURLE_SEND_ERROR:
        case CURLE_RECV_ERROR:
        case CURLE_PARTIAL_FILE:
        case CURLE_GOT_NOTHING:
        case CURLE_OPERATION_TIMEDOUT:
            return true;
        default:
            return false;
    }
}

bool RestClient::waitUnlessCanceled(std::chrono::milliseconds wait, const std::function<bool()>& isCanceled) {
    const auto end = std::chrono::steady_clock::now() + wait;
    while (std::chrono::steady_clock::now() < end) {
        if (isCanceled()) return false;
        std::this_thread::sleep_for(std::min<std::chrono::milliseconds>(
            kCancelPoll,
            std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now())));
    }
    return !isCanceled();
}

struct RestClient::Shared {
    RetryPolicy policy;
    std::mutex mutex;
    std::shared_ptr<RestAuthorization> authorization;
    std::vector<std::string> secrets;

    std::shared_ptr<RestAuthorization> currentAuthorization() {
        std::lock_guard lock(mutex);
        return authorization;
    }
    std::string masked(std::string text) {
        std::lock_guard lock(mutex);
        for (const std::string& secret : secrets) {
            for (auto at = text.find(secret); at != std::string::npos; at = text.find(secret, at + 4))
                text.replace(at, secret.size(), "****");
        }
        return text;
    }

    RestReply once(CurlHandle& handle, const RestRequest& request, TransferProgress* progress);
    RestReply perform(CurlHandle& handle, const RestRequest& request, TransferProgress* progress);
};

RestReply RestClient::Shared::once(CurlHandle& handle, const RestRequest& request, TransferProgress* progress) {
    RestReply reply;
    HttpRequest http(handle, request.method, request.url);
    for (const std::string& header : request.headers) http.addHeader(header);
    if (const auto lender = currentAuthorization(); lender && !request.anonymous) {
        if (const auto value = lender->header()) http.addHeader("Authorization: " + *value);
    }
    if (request.timeout) http.setTimeoutSeconds(static_cast<long>(request.timeout->count()));
    std::string error;
    bool ready = true;
    if (request.text) {
        http.sendText(*request.text);
    } else if (request.file) {
        ready = http.sendFileSlice(request.file->path, request.file->offset, request.file->length, error);
    } else if (request.multipart) {
        const auto& form = *request.multipart;
        ready = http.sendMultipart(form.fields, form.fileField, form.fileName, form.path, error);
    } else if (request.method == "POST" || request.method == "PUT") {
        // An empty body, announced as such.
        http.sendText("");
    }
    if (ready && request.downloadTo) {
        ready = http.receiveFile(*request.downloadTo, error);
    } else if (ready) {
        http.keepBody(request.replyLimit);
    }
    if (!ready) {
        reply.code = CURLE_READ_ERROR;
        reply.error = masked(error);
        return reply;
    }
    HttpReply answer = http.perform(progress);
    reply.code = answer.code;
    reply.status = answer.status;
    reply.body = std::move(answer.body);
    reply.headers = std::move(answer.headers);
    if (answer.bodyTooLarge) {
        reply.code = CURLE_WRITE_ERROR;
        reply.error = "The reply is larger than " + std::to_string(request.replyLimit) + " bytes";
    } else if (progress != nullptr && progress->abortRequested) {
        reply.error = "Canceled";
    } else if (answer.code != CURLE_OK) {
        reply.error = masked(handle.errorText(answer.code));
    } else if (!reply.isSuccess()) {
        reply.error = masked("HTTP " + std::to_string(answer.status) + (answer.reason.empty() ? "" : " ") +
                             handle.dialogue().clean(answer.reason));
    }
    return reply;
}

RestReply RestClient::Shared::perform(CurlHandle& handle, const RestRequest& request, TransferProgress* progress) {
    const int attempts = std::max(1, request.attempts.value_or(policy.attempts));
    bool refreshed = false;
    std::chrono::milliseconds backoff = std::chrono::seconds(1);
    for (int attempt = 1;; ++attempt) {
        RestReply reply = once(handle, request, progress);
        if (progress != nullptr && progress->abortRequested) return reply;
        if (reply.code == CURLE_OK && reply.status == 401 && !request.anonymous && !refreshed) {
            const auto lender = currentAuthorization();
            refreshed = true;
            // A fresh token is one more try, not one of the retries.
            if (lender && lender->refresh()) {
                --attempt;
                continue;
            }
        }
        const bool retried = reply.code == CURLE_OK ? isRetriedStatus(reply.status) : reply.isDroppedConnection();
        if (!retried || attempt >= attempts) return reply;
        std::chrono::milliseconds wait = backoff;
        if (const auto asked = reply.retryAfter()) wait = *asked;
        wait = std::min<std::chrono::milliseconds>(wait, policy.longestWait);
        backoff = std::min<std::chrono::milliseconds>(backoff * 2, policy.longestWait);
        if (!RestClient::waitUnlessCanceled(wait,
                                            [progress] { return progress != nullptr && progress->abortRequested; }))
            return reply;
    }
}

namespace {

// A request running on a thread of its own, with a connection of its own.
class RunningRestRequest final : public RestClient::RunningRequest {
public:
    using Perform = std::function<RestReply(CurlHandle&, TransferProgress&)>;

    explicit RunningRestRequest(Perform perform)
        : transfer_([this, perform = std::move(perform)](TransferProgress& progress) {
              CurlHandle handle;
              reply_ = perform(handle, progress);
              return TransferOutcome{reply_.isSuccess(), reply_.error};
          }) {}

    bool waitUntilFinished(std::chrono::milliseconds timeout) override { return transfer_.waitUntilFinished(timeout); }
    bool isFinished() const override { return transfer_.isFinished(); }
    bool succeeded() const override { return transfer_.succeeded(); }
    std::int64_t bytesDone() const override { return transfer_.bytesDone(); }
    std::int64_t bytesExpected() const override { return transfer_.bytesExpected(); }
    double bytesPerSecond() const override { return transfer_.bytesPerSecond(); }
    void abort() override { transfer_.abort(); }
    std::string error() const override { return transfer_.error(); }
    // Written by the job before it reports its end, read only after.
    const RestReply& reply() const override { return reply_; }

private:
    RestReply reply_;
    // Last: the job writes reply_, which must exist first.
    ThreadedTransfer<Transfer> transfer_;
};

}  // namespace

RestClient::RestClient(RetryPolicy policy)
    : shared_(std::make_shared<Shared>()), handle_(std::make_unique<CurlHandle>()) {
    shared_->policy = policy;
}

RestClient::~RestClient() = default;

void RestClient::setAuthorization(std::shared_ptr<RestAuthorization> authorization) {
    std::lock_guard lock(shared_->mutex);
    shared_->authorization = std::move(authorization);
}

void RestClient::addSecret(std::string secret) {
    if (secret.empty()) return;
    std::lock_guard lock(shared_->mutex);
    shared_->secrets.push_back(std::move(secret));
}

RestReply RestClient::perform(const RestRequest& request, TransferProgress* progress) {
    return shared_->perform(*handle_, request, progress);
}

std::unique_ptr<RestClient::RunningRequest> RestClient::start(RestRequest request) {
    return std::make_unique<RunningRestRequest>(
        [shared = shared_, request = std::move(request)](CurlHandle& handle, TransferProgress& progress) {
            return shared->perform(handle, request, &progress);
        });
}

}  // namespace stowhaven
