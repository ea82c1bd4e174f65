#include "storage/onedrive/SkyDriveWrapper.h"

#include "core/Text.h"
#include "net/ServiceBase.h"
#include "platform/AsciiCase.h"
#include "platform/FileManager.h"
#include "platform/Log.h"

#include <nlohmann/json.hpp>

#include <filesystem>

namespace stowhaven {

namespace {

constexpr std::string_view kStoredSuffix = ".pdf";
constexpr const char* kDescription = "Stowhaven data";
// Bytes to megabytes, for the log.
constexpr double kMegabytesPerByte = 9.5367431640625e-07;

RestRequest jsonRequestOf(std::string method, std::string url, const std::string& name) {
    return RestRequest::ofJson(std::move(method), std::move(url),
                               nlohmann::json{{"name", name}, {"description", kDescription}}.dump());
}

}  // namespace

SkyDriveWrapper::SkyDriveWrapper()
    : service_(SkyDriveService::fromEnvironment()),
      tokens_(std::make_shared<SkyDriveTokens>(service_)),
      query_(tokens_, *this) {}

std::string SkyDriveWrapper::localName(const std::string& remoteName) {
    if (remoteName.size() > kStoredSuffix.size() &&
        equalsIgnoringAsciiCase(std::string_view(remoteName).substr(remoteName.size() - kStoredSuffix.size()),
                                kStoredSuffix))
        return remoteName.substr(0, remoteName.size() - kStoredSuffix.size());
    return remoteName;
}

std::string SkyDriveWrapper::accountName() const {
    std::lock_guard lock(mutex_);
    return accountName_;
}

std::optional<SkyDriveEntry> SkyDriveWrapper::mainDirectoryData() const {
    std::lock_guard lock(mutex_);
    return mainDirectoryData_;
}

std::optional<SkyDriveEntry> SkyDriveWrapper::rootDirectoryData() const {
    std::lock_guard lock(mutex_);
    return rootDirectoryData_;
}

bool SkyDriveWrapper::isReady() {
    if (const auto problem = service_.problem()) {
        query_.fail(*problem);
        return false;
    }
    if (!tokens_->hasAccessToken()) {
        SH_LOG("Access token is NIL!");
        query_.fail("Not logged in to OneDrive");
        return false;
    }
    return true;
}

std::optional<RestReply> SkyDriveWrapper::call(const RestRequest& request) {
    if (!isReady()) return std::nullopt;
    return query_.perform(request);
}

template <typename Reader>
auto SkyDriveWrapper::read(const std::optional<RestReply>& reply, Reader reader)
    -> decltype(reader(std::string_view(), std::declval<std::string&>())) {
    if (!reply) return std::nullopt;
    std::string error;
    auto value = reader(reply->body, error);
    if (!value) query_.fail(error);
    return value;
}

bool SkyDriveWrapper::retrieveAccountName() {
    const auto name = read(call(RestRequest::of("GET", service_.meUrl())), SkyDriveReplies::userName);
    if (!name) return false;
    std::lock_guard lock(mutex_);
    accountName_ = *name;
    return true;
}

bool SkyDriveWrapper::retrieveQuota() {
    const auto available = read(call(RestRequest::of("GET", service_.quotaUrl())), SkyDriveReplies::available);
    if (!available) return false;
    freeSpace_ = *available;
    SH_LOG("FreeSpace: {:.3f}Mb", *available * kMegabytesPerByte);
    return true;
}

std::optional<SkyDriveEntry> SkyDriveWrapper::topFolder() {
    const auto top = read(call(RestRequest::of("GET", service_.topFolderUrl())), SkyDriveReplies::entry);
    if (top && !top->isFolder) return query_.fail("The reply holds no folder");
    return top;
}

std::optional<std::vector<SkyDriveEntry>> SkyDriveWrapper::loadFileListFrom(const std::string& folderId) {
    auto listing = read(call(RestRequest::of("GET", service_.childrenUrl(folderId))), SkyDriveReplies::listing);
    if (!listing) return std::nullopt;
    if (listing->refused > 0) SH_LOG("{} item(s) of folder {} refused", listing->refused, folderId);
    for (SkyDriveEntry& entry : listing->entries) entry.parentId = folderId;
    return std::move(listing->entries);
}

std::optional<SkyDriveEntry> SkyDriveWrapper::createDirectory(const std::string& name, const std::string& parentId) {
    auto made = read(call(jsonRequestOf("POST", service_.itemUrl(parentId), name)), SkyDriveReplies::entry);
    if (made && !made->isFolder) return query_.fail("The reply holds no folder");
    if (made) made->parentId = parentId;
    return made;
}

bool SkyDriveWrapper::rename(const std::string& id, const std::string& name) {
    return call(jsonRequestOf("PUT", service_.itemUrl(id), name)).has_value();
}

bool SkyDriveWrapper::deleteFileData(const std::string& id) {
    if (!call(RestRequest::of("DELETE", service_.itemUrl(id)))) return false;
    std::lock_guard lock(mutex_);
    if (rootDirectoryData_ && equalsIgnoringAsciiCase(rootDirectoryData_->id, id)) rootDirectoryData_.reset();
    return true;
}

std::optional<SkyDriveEntry> SkyDriveWrapper::uploadFile(const std::string& localPath, const std::string& folderId) {
    if (!isReady()) return std::nullopt;
    if (!FileManager::isRegularFile(localPath)) return query_.fail(localPath + " is no file to send");
    const std::string name = std::filesystem::path(localPath).filename().string() + std::string(kStoredSuffix);
    RestRequest request = RestRequest::of(
        "PUT", service_.itemUrl(folderId) + "/files/" + textutil::percentEncoded(name) + "?overwrite=false");
    request.file = RestRequest::FileBody{localPath, 0, std::nullopt};
    const auto size = static_cast<std::int64_t>(FileManager::sizeOfItem(localPath));
    auto stored =
        read(query_.transfer(request, TransferDisplay::Direction::Upload, size), SkyDriveReplies::uploadedFile);
    if (stored) stored->parentId = folderId;
    return stored;
}

// The content's address answers a redirect to where the bytes are, fetched without the token.
bool SkyDriveWrapper::downloadFileData(const std::string& id, const std::string& localPath) {
    if (!isReady()) return false;
    const auto reply = query_.perform(RestRequest::of("GET", service_.itemUrl(id) + "/content"), true);
    if (!reply) return false;
    const auto location = reply->header("Location");
    if (reply->isSuccess() || !location) {
        query_.fail("OneDrive gave no download address");
        return false;
    }
    if (!ServiceBase::isSecureOrLoopback(*location)) {
        query_.fail("OneDrive sent the download to an address that isn't secure");
        return false;
    }
    RestRequest request = RestRequest::of("GET", *location);
    request.downloadTo = localPath;
    request.anonymous = true;
    return query_.transfer(request, TransferDisplay::Direction::Download, 0).has_value();
}

void SkyDriveWrapper::disconnect() {
    tokens_->removeAllTokens();
    std::lock_guard lock(mutex_);
    mainDirectoryData_.reset();
    rootDirectoryData_.reset();
}

}  // namespace stowhaven
