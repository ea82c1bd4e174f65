#include "net/WebDavClient.h"

#include "net/CurlHandle.h"
#include "net/HttpRequest.h"
#include "net/MultistatusReply.h"
#include "net/ThreadedTransfer.h"
#include "net/WebDavPaths.h"
#include "platform/AsciiCase.h"
#include "platform/Log.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <initializer_list>

namespace stowhaven {

namespace {

// An upload's request time-out: the server may take this long to answer, or the body may
// stall this long. It is no limit on the whole request, which a large file on a slow link
// could never meet.
constexpr long kUploadStalledSeconds = 40;

// "Request failed: forbidden (403)", in the server's words for the status.
std::string requestFailed(const HttpReply& reply) {
    std::string reason = reply.status == 404 ? "not found" : reply.reason;
    for (char& c : reason) c = asciiLower(c);
    return fmt::format("Request failed: {} ({})", reason.empty() ? "status" : reason, reply.status);
}

// What a failed request tells the user, never the password: a refusal by its status, a
// request that got no whole reply in curl's words.
std::string failureText(const CurlHandle& curl, const HttpReply& reply) {
    if (reply.code != CURLE_OK) return curl.errorText(reply.code);
    // A missing path in the very words the login's flow looks for before it makes the folder.
    if (reply.status == 404) return requestFailed(reply);
    if (reply.status >= 300 && reply.status < 400) return fmt::format("Request failed: redirected ({})", reply.status);
    const char* prefix = reply.status == 401   ? "You have entered bad credentials. "
                         : reply.status == 403 ? "Access forbidden. "
                         : reply.status == 408 ? "Timeout. "
                                               : "Unknown error. ";
    return curl.dialogue().clean(prefix + requestFailed(reply));
}

}  // namespace

struct WebDavClient::Connection {
    WebDavAccount account;
    // Shared with a transfer, whose thread may outlive the call that started it.
    std::shared_ptr<CurlHandle> curl = std::make_shared<CurlHandle>();
    std::string lastError;

    // Whether the account and PATHS can go to the server; leaves the error when not.
    bool check(std::initializer_list<const std::string*> paths) {
        auto problem = WebDavPaths::accountProblem(account);
        for (const auto* path : paths) {
            if (!problem) problem = WebDavPaths::problem(*path);
        }
        if (problem) fail(*problem);
        return !problem;
    }

    bool fail(const std::string& error) {
        lastError = curl->dialogue().clean(error);
        return false;
    }

    // Runs REQUEST; true for a success (2xx), else false with the error. WHAT names it in the log.
    bool perform(HttpRequest& request, const std::string& what, HttpReply* kept = nullptr) {
        HttpReply reply = request.perform();
        const bool succeeded = reply.isSuccess();
        if (!succeeded) {
            SH_LOG("{} on {} failed: {}", what, account.baseUrl, curl->dialogue().tail());
            fail(reply.bodyTooLarge ? "the reply is larger than 16 MiB" : failureText(*curl, reply));
        }
        if (kept != nullptr) *kept = std::move(reply);
        return succeeded;
    }

    // PROPFIND of PATH at DEPTH, read as a multistatus.
    std::optional<Multistatus> propfind(const std::string& path, const char* depth) {
        if (!check({&path})) return std::nullopt;
        const bool folder = std::string(depth) == "1";
        HttpRequest request(*curl, "PROPFIND", urlOf(path, folder));
        authenticate(request, account);
        request.addHeader(std::string("Depth: ") + depth);
        request.addHeader("Content-Type: application/xml");
        request.sendText(MultistatusReply::propertyRequest());
        request.keepBody(MultistatusReply::kLargestReply);
        HttpReply reply;
        if (!perform(request, "Listing of " + path, &reply)) return std::nullopt;
        if (reply.status != 207) {
            fail(fmt::format("the reply to the listing of {} is not a multistatus ({})", path, reply.status));
            return std::nullopt;
        }
        std::string problem;
        auto multistatus = MultistatusReply::parse(reply.body, path, problem);
        if (!multistatus) {
            SH_LOG("Listing of {} refused: {}", path, problem);
            fail(problem);
        }
        return multistatus;
    }

    std::string urlOf(const std::string& path, bool folder = false) const {
        return WebDavPaths::url(curl->get(), account, path, folder);
    }

    static void authenticate(HttpRequest& request, const WebDavAccount& account) {
        request.authenticate(account.login, account.password);
        // A user's own server often has a self-signed certificate, and must still work.
        request.acceptAnyCertificate();
    }

    // A request of METHOD on PATH without a body; HEADERS added.
    bool send(const std::string& method, const std::string& path, std::initializer_list<std::string> headers = {}) {
        HttpRequest request(*curl, method, urlOf(path));
        authenticate(request, account);
        for (const auto& header : headers) request.addHeader(header);
        return perform(request, method + " " + path);
    }

    // A transfer running JOB with an authenticated request of METHOD on PATH, on the shared
    // handle, or one that has failed already when the account or PATH can't be used.
    std::unique_ptr<Transfer> startTransfer(
        const std::string& method, const std::string& path,
        std::function<TransferOutcome(CurlHandle&, HttpRequest&, TransferProgress&)> job) {
        if (!check({&path})) return ThreadedTransfer<Transfer>::failed(lastError);
        return std::make_unique<ThreadedTransfer<Transfer>>(
            [curl = curl, account = account, method, path, job = std::move(job)](TransferProgress& progress) {
                HttpRequest request(*curl, method, WebDavPaths::url(curl->get(), account, path));
                authenticate(request, account);
                return job(*curl, request, progress);
            });
    }
};

namespace {

// Runs a transfer's REQUEST on CURL; WHAT names it in the log.
TransferOutcome transferOutcome(CurlHandle& curl, HttpRequest& request, TransferProgress& progress,
                                const std::string& what) {
    const HttpReply reply = request.perform(&progress);
    if (reply.isSuccess()) return {true, ""};
    SH_LOG("{} failed: {}", what, curl.dialogue().tail());
    return {false, failureText(curl, reply)};
}

}  // namespace

WebDavClient::WebDavClient(WebDavAccount account) : connection_(std::make_unique<Connection>()) {
    connection_->account = std::move(account);
    connection_->curl->setSecret(connection_->account.password);
}

WebDavClient::~WebDavClient() = default;

std::optional<std::vector<WebDavEntry>> WebDavClient::list(const std::string& folder) {
    auto multistatus = connection_->propfind(folder, "1");
    if (!multistatus) return std::nullopt;
    return std::move(multistatus->entries);
}

std::optional<WebDavEntry> WebDavClient::entry(const std::string& path) {
    auto multistatus = connection_->propfind(path, "0");
    if (!multistatus) return std::nullopt;
    if (!multistatus->listed) connection_->fail("the reply doesn't name " + path);
    return multistatus->listed;
}

bool WebDavClient::createFolder(const std::string& path) {
    return connection_->check({&path}) && connection_->send("MKCOL", path);
}

bool WebDavClient::move(const std::string& from, const std::string& to) {
    auto& connection = *connection_;
    if (!connection.check({&from, &to})) return false;
    const auto source = WebDavPaths::names(from);
    const auto target = WebDavPaths::names(to);
    if (target.size() >= source.size() && std::equal(source.begin(), source.end(), target.begin()))
        return connection.fail("can't move " + from + " onto itself or into itself");
    return connection.send("MOVE", from, {"Destination: " + connection.urlOf(to), "Overwrite: T"});
}

bool WebDavClient::remove(const std::string& path) {
    return connection_->check({&path}) && connection_->send("DELETE", path);
}

std::unique_ptr<Transfer> WebDavClient::startUpload(const std::string& localPath, const std::string& remotePath) {
    return connection_->startTransfer(
        "PUT", remotePath, [localPath, remotePath](CurlHandle& curl, HttpRequest& request, TransferProgress& progress) {
            std::error_code ignored;
            if (!std::filesystem::exists(localPath, ignored))
                return TransferOutcome{false, "You are trying upload a file that does not exist"};
            std::string error;
            if (!request.sendFile(localPath, error)) return TransferOutcome{false, error};
            request.setStalledSeconds(kUploadStalledSeconds);
            return transferOutcome(curl, request, progress, "Upload of " + localPath + " to " + remotePath);
        });
}

std::unique_ptr<Transfer> WebDavClient::startDownload(const std::string& remotePath, const std::string& localPath) {
    return connection_->startTransfer(
        "GET", remotePath, [remotePath, localPath](CurlHandle& curl, HttpRequest& request, TransferProgress& progress) {
            std::string error;
            if (!request.receiveFile(localPath, error)) return TransferOutcome{false, error};
            return transferOutcome(curl, request, progress, "Download of " + remotePath + " to " + localPath);
        });
}

std::string WebDavClient::lastError() const { return connection_->lastError; }

}  // namespace stowhaven
