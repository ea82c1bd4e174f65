#include "storage/owncloud/OwnCloudWrapper.h"

#include "platform/Log.h"

#include <fmt/format.h>

#include <filesystem>

namespace stowhaven {

namespace {

// What the client answers for a path the share hasn't: the server took the login.
constexpr std::string_view kNotFound = "Request failed: not found (404)";

}  // namespace

OwnCloudWrapper::OwnCloudWrapper(ServerCredentials credentials) : credentials_(std::move(credentials)) {}

std::string OwnCloudWrapper::description() const {
    return fmt::format("{}@{}{}", credentials_.login, credentials_.host, credentials_.rootDirectory);
}

WebDavClient& OwnCloudWrapper::share() {
    if (!share_) {
        share_ =
            std::make_unique<WebDavClient>(WebDavAccount{credentials_.host, credentials_.login, credentials_.password});
    }
    return *share_;
}

void OwnCloudWrapper::disconnect() {
    share_.reset();
    loggedIn_ = false;
}

bool OwnCloudWrapper::answered(bool succeeded) {
    if (succeeded) {
        loggedIn_ = true;
        return true;
    }
    const std::string error = share().lastError();
    loggedIn_ = error.starts_with(kNotFound);
    SH_LOG("error: {}", error);
    setErrorMessage(error);
    return false;
}

std::optional<std::vector<RemoteEntry>> OwnCloudWrapper::listDirectory(const std::string& path) {
    SH_LOG("Listing <{}>...", path);
    setErrorMessage(std::nullopt);
    const auto entries = share().list(path);
    if (!answered(entries.has_value())) return std::nullopt;
    std::vector<RemoteEntry> listed;
    for (const WebDavEntry& entry : *entries) listed.push_back({entry.name, entry.isDirectory, false, entry.size});
    return listed;
}

bool OwnCloudWrapper::createDirectory(const std::string& path) {
    setErrorMessage(std::nullopt);
    return answered(share().createFolder(path));
}

bool OwnCloudWrapper::deleteTree(const std::string& path) {
    SH_LOG("Deleting <{}>...", path);
    setErrorMessage(std::nullopt);
    return answered(share().remove(path));
}

bool OwnCloudWrapper::deleteFile(const std::string& path) { return deleteTree(path); }

bool OwnCloudWrapper::rename(const std::string& from, const std::string& to) {
    SH_LOG("{} -> {}...", from, to);
    setErrorMessage(std::nullopt);
    return answered(share().move(from, to));
}

bool OwnCloudWrapper::uploadFromPath(const std::string& localPath, const std::string& remoteFolder) {
    SH_LOG("{} -> {}", localPath, remoteFolder);
    setErrorMessage(std::nullopt);
    const auto size = sizeOfFileToSend(localPath);
    if (!size) return false;
    const std::string name = std::filesystem::path(localPath).filename().string();
    const auto transfer = share().startUpload(localPath, remoteFolder + "/" + name);
    return followTransfer(*transfer, TransferDisplay::Direction::Upload, *size);
}

bool OwnCloudWrapper::getFile(const std::string& remotePath, const std::string& localPath) {
    SH_LOG("Loading <{}> into <{}>...", remotePath, localPath);
    setErrorMessage(std::nullopt);
    const auto entry = share().entry(remotePath);
    if (!answered(entry.has_value())) return false;
    const auto transfer = share().startDownload(remotePath, localPath);
    return followTransfer(*transfer, TransferDisplay::Direction::Download, entry->size);
}

}  // namespace stowhaven
