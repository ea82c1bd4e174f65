#include "storage/sugarsync/SugarSyncClient.h"

#include "platform/FileManager.h"
#include "platform/Log.h"
#include "storage/TransferFollowing.h"

#include <map>

namespace stowhaven {

namespace {

// XML bodies go in UTF-8.
constexpr const char* kXmlContentType = "Content-Type: application/xml; charset=UTF-8";

const std::map<long, const char*>& refusalTexts() {
    static const std::map<long, const char*> texts = {
        {400, "Bad request or required missing info!"},
        {401, "(Unauthorized) Authentication failed!"},
        {403, "Forbidden. Can't access the intended URI or URL or operation is not allowed. (For example, cannot "
              "delete system folder like Magic Briefcase.)!"},
        {404, "Not found. Check the path of the URI or URL for the intended target!"},
        {406, "Not acceptable. Check for unsupported or invalid Accept header value!"},
        {413, "Over storage limit. Check PUT request entity size!"},
        {416, "Incorrect range or cannot be satisfied. Check intended values!"}};
    return texts;
}

RestRequest requestOf(std::string method, std::string url) {
    RestRequest request;
    request.method = std::move(method);
    request.url = std::move(url);
    request.headers = {"Accept: application/xml"};
    return request;
}

RestRequest xmlRequestOf(std::string method, std::string url, std::string body) {
    RestRequest request = requestOf(std::move(method), std::move(url));
    request.headers.push_back(kXmlContentType);
    request.text = std::move(body);
    return request;
}

bool acceptsAnything(std::string_view, std::string&) { return true; }

}  // namespace

// The REST client's own retries are off: the engine's rule sends requests again.
SugarSyncClient::SugarSyncClient(SugarSyncService service, AbstractStorageWrapper& errors)
    : service_(std::move(service)),
      errors_(errors),
      session_(std::make_shared<SugarSyncSession>(service_, retries_)),
      client_(RetryPolicy{1, std::chrono::seconds(0)}) {
    client_.setAuthorization(session_);
    client_.addSecret(service_.privateKey.value_or(""));
}

bool SugarSyncClient::fail(const std::string& message) {
    SH_LOG("{}", message);
    errors_.setErrorMessage(message);
    return false;
}

RestReply SugarSyncClient::perform(const RestRequest& request, Transfer transfer, std::string& error) {
    if (transfer == Transfer::None) {
        std::lock_guard lock(mutex_);
        RestReply reply = client_.perform(request);
        error = reply.error;
        return reply;
    }
    const std::int64_t size =
        transfer == Transfer::Upload ? static_cast<std::int64_t>(FileManager::sizeOfItem(request.file->path)) : 0;
    const auto running = client_.start(request);
    const bool succeeded = followTransfer(
        *running, transfer == Transfer::Upload ? TransferDisplay::Direction::Upload : TransferDisplay::Direction::Download,
        size, error);
    RestReply reply = running->reply();
    if (!succeeded && reply.error.empty()) reply.error = error;
    return reply;
}

template <typename Read>
std::optional<RestReply> SugarSyncClient::call(RestRequest request, Read read, Transfer transfer) {
    if (const auto problem = service_.problem()) {
        fail(*problem);
        return std::nullopt;
    }
    if (!session_->isLoggedIn()) {
        fail("Authorization token not set!");
        return std::nullopt;
    }
    if (!service_.isOwnReference(request.url)) {
        fail("SugarSync handed out an address off its own host: <" + request.url + ">");
        return std::nullopt;
    }
    request.attempts = 1;
    // A request that goes through after a retry leaves no error behind.
    bool retried = false;
    const auto succeeded = [&](RestReply reply) {
        if (retried) errors_.setErrorMessage(std::nullopt);
        return reply;
    };
    for (;;) {
        std::string error;
        RestReply reply = perform(request, transfer, error);
        if (reply.code == CURLE_OK && reply.status > 0 && reply.status < 400) {
            if (reply.status == 301) {
                SH_LOG("Moved Permanently. The folder's URL changed as a result of the PUT request, and the new URL "
                       "is in Location header.! URL: {}",
                       request.url);
            }
            if (reply.body.empty() || request.downloadTo) return succeeded(std::move(reply));
            if (read(reply.body, error)) {
                retries_.readReply();
                return succeeded(std::move(reply));
            }
        } else {
            const auto refusal = refusalTexts().find(reply.status);
            if (refusal != refusalTexts().end()) SH_LOG("{} URL: {}", refusal->second, request.url);
            error = SugarSyncReplies::errorText(request.url, reply);
        }
        fail(error);
        if (!retries_.failed(error, reply)) return std::nullopt;
        retried = true;
    }
}

std::optional<SugarSyncUser> SugarSyncClient::user() {
    std::optional<SugarSyncUser> user;
    const auto read = [&user](std::string_view body, std::string& error) {
        user = SugarSyncReplies::user(body, error);
        return user.has_value();
    };
    if (!call(requestOf("GET", service_.url("/user")), read) || !user) {
        if (!errors_.errorMessage()) fail("The user record is empty");
        return std::nullopt;
    }
    return user;
}

std::optional<SugarSyncContents> SugarSyncClient::contents(const std::string& folderRef) {
    std::optional<SugarSyncContents> contents;
    const auto read = [&contents](std::string_view body, std::string& error) {
        contents = SugarSyncReplies::contents(body, error);
        return contents.has_value();
    };
    if (!call(requestOf("GET", folderRef + "/contents"), read) || !contents) {
        if (!errors_.errorMessage()) fail("The folder's contents are empty");
        return std::nullopt;
    }
    // A reference elsewhere would take the account's token with it.
    std::erase_if(contents->entries, [&](const SugarSyncEntry& entry) {
        const bool elsewhere =
            !service_.isOwnReference(entry.ref) || (!entry.isFolder && !service_.isOwnReference(entry.fileData));
        if (elsewhere) SH_LOG("Refused the listed item <{}> of reference <{}>", entry.displayName, entry.ref);
        return elsewhere;
    });
    for (const std::string& refused : contents->refused) SH_LOG("Refused the listed item <{}>", refused);
    return contents;
}

std::optional<std::string> SugarSyncClient::create(const std::string& folderRef, const std::string& body) {
    const auto reply = call(xmlRequestOf("POST", folderRef, body), acceptsAnything);
    if (!reply) return std::nullopt;
    const auto location = reply->header("Location");
    if (!location || !service_.isOwnReference(*location)) {
        fail("SugarSync gave no reference of its own for the new entry");
        return std::nullopt;
    }
    return location;
}

bool SugarSyncClient::update(const std::string& ref, const std::string& body) {
    return call(xmlRequestOf("PUT", ref, body), acceptsAnything).has_value();
}

bool SugarSyncClient::remove(const std::string& ref) {
    return call(requestOf("DELETE", ref), acceptsAnything).has_value();
}

bool SugarSyncClient::putData(const std::string& localPath, const std::string& fileRef) {
    if (!FileManager::isRegularFile(localPath)) return fail(localPath + " is no file to send");
    RestRequest request = requestOf("PUT", fileRef + "/data");
    request.headers.push_back("Content-Type: application/x-compressed");
    request.file = RestRequest::FileBody{localPath, 0, std::nullopt};
    return call(std::move(request), acceptsAnything, Transfer::Upload).has_value();
}

bool SugarSyncClient::download(const std::string& fileData, const std::string& localPath) {
    RestRequest request = requestOf("GET", fileData);
    request.headers.clear();
    request.downloadTo = localPath;
    return call(std::move(request), acceptsAnything, Transfer::Download).has_value();
}

}  // namespace stowhaven
