#include "storage/ftp/FTPWrapper.h"

#include "platform/Log.h"

#include <fmt/format.h>

#include <charconv>
#include <filesystem>

namespace stowhaven {

namespace {

std::string lastPathComponent(const std::string& path) { return std::filesystem::path(path).filename().string(); }

// What the client needs; a port that is no number in 1...65535 is none.
std::optional<FtpAccount> accountOf(const ServerCredentials& credentials) {
    const std::string port = credentials.port.empty() ? "21" : credentials.port;
    int number = 0;
    const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), number);
    if (error != std::errc() || end != port.data() + port.size() || number < 1 || number > 65535) return std::nullopt;
    return FtpAccount{credentials.host, number, credentials.login, credentials.password, credentials.passive};
}

}  // namespace

FTPWrapper::FTPWrapper(ServerCredentials credentials) : credentials_(std::move(credentials)) {}

FTPWrapper::~FTPWrapper() { disconnect(); }

std::string FTPWrapper::description() const {
    return fmt::format("ftp://{}@{}:{}{} {{{}}}", credentials_.login, credentials_.host, credentials_.port,
                       credentials_.rootDirectory, credentials_.passive ? "passive" : "active");
}

FtpClient* FTPWrapper::server() {
    if (server_ && server_->isConnected()) return server_.get();
    const auto account = accountOf(credentials_);
    if (!account) {
        setErrorMessage("The port of the FTP server must be a number from 1 to 65535.");
        return nullptr;
    }
    SH_LOG("Connecting to <{}>...", credentials_.host);
    server_ = std::make_unique<FtpClient>(*account);
    if (!server_->connect()) {
        SH_LOG("Failed to connect to <{}>...", credentials_.host);
        failed();
        server_.reset();
        return nullptr;
    }
    SH_LOG("Connected to <{}>!", credentials_.host);
    return server_.get();
}

bool FTPWrapper::failed() {
    const std::string error = server_ ? server_->lastError() : std::string("Not connected");
    SH_LOG("error: {}", error);
    setErrorMessage(error);
    return false;
}

void FTPWrapper::disconnect() {
    if (!server_) return;
    SH_LOG("Disconnecting from <{}>...", credentials_.host);
    server_->disconnect();
    server_.reset();
    SH_LOG("Disconnected from <{}>!", credentials_.host);
}

bool FTPWrapper::isLoggedIn() const { return server_ && server_->isConnected(); }

std::optional<std::vector<RemoteEntry>> FTPWrapper::listDirectory(const std::string& path) {
    SH_LOG("Listing <{}>...", path);
    setErrorMessage(std::nullopt);
    FtpClient* client = server();
    const auto entries = client ? client->list(path) : std::nullopt;
    if (!entries) {
        if (client) failed();
        return std::nullopt;
    }
    std::vector<RemoteEntry> listed;
    for (const FtpEntry& entry : *entries) {
        listed.push_back({entry.name, entry.isDirectory, entry.isSymbolicLink, entry.size});
    }
    return listed;
}

bool FTPWrapper::createDirectory(const std::string& path) {
    setErrorMessage(std::nullopt);
    FtpClient* client = server();
    return client != nullptr && (client->createDirectory(path) || failed());
}

bool FTPWrapper::deleteTree(const std::string& path) {
    SH_LOG("Deleting <{}>...", path);
    setErrorMessage(std::nullopt);
    FtpClient* client = server();
    return client != nullptr && (client->deleteTree(path) || failed());
}

bool FTPWrapper::deleteFile(const std::string& path) {
    setErrorMessage(std::nullopt);
    FtpClient* client = server();
    return client != nullptr && (client->deleteFile(path) || failed());
}

bool FTPWrapper::rename(const std::string& from, const std::string& to) {
    SH_LOG("{} -> {}...", from, to);
    setErrorMessage(std::nullopt);
    FtpClient* client = server();
    return client != nullptr && (client->rename(from, to) || failed());
}

bool FTPWrapper::uploadFromPath(const std::string& localPath, const std::string& remoteFolder) {
    SH_LOG("{} -> {}", localPath, remoteFolder);
    setErrorMessage(std::nullopt);
    const auto size = sizeOfFileToSend(localPath);
    FtpClient* client = size ? server() : nullptr;
    if (client == nullptr) return false;
    const auto transfer = client->startUpload(localPath, remoteFolder + "/" + lastPathComponent(localPath));
    return endTransfer(followTransfer(*transfer, TransferDisplay::Direction::Upload, *size));
}

bool FTPWrapper::getFile(const std::string& remotePath, const std::string& localPath) {
    SH_LOG("Loading <{}> into <{}>...", remotePath, localPath);
    setErrorMessage(std::nullopt);
    FtpClient* client = server();
    if (client == nullptr) return false;
    const auto size = client->sizeOf(remotePath);
    if (!size) return failed();
    const auto transfer = client->startDownload(remotePath, localPath);
    return endTransfer(followTransfer(*transfer, TransferDisplay::Direction::Download, *size));
}

// A transfer cut short may leave the connection in any state: the next one starts anew.
bool FTPWrapper::endTransfer(bool succeeded) {
    if (!succeeded) server_.reset();
    return succeeded;
}

}  // namespace stowhaven
