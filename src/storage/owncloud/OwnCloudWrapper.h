#pragma once

#include "net/WebDavClient.h"
#include "storage/RemoteFolders.h"
#include "storage/ServerCredentials.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// The WebDAV share of the credentials, whose host is the share's base URL
// ("https://cloud.example.net:8443"); its error is the server's answer in the words the
// host screen knows ("You have entered bad credentials. ", "Request failed: not found (404)").
class OwnCloudWrapper final : public RemoteFolders {
public:
    explicit OwnCloudWrapper(ServerCredentials credentials);

    const ServerCredentials& credentials() const { return credentials_; }

    // The server took the credentials at its last answer: a missing folder is no refusal.
    bool isLoggedIn() const override { return loggedIn_; }
    void disconnect() override;
    // "login@URL/root".
    std::string description() const override;

    std::optional<std::vector<RemoteEntry>> listDirectory(const std::string& path) override;
    bool createDirectory(const std::string& path) override;
    bool deleteTree(const std::string& path) override;
    bool deleteFile(const std::string& path) override;
    bool rename(const std::string& from, const std::string& to) override;
    bool uploadFromPath(const std::string& localPath, const std::string& remoteFolder) override;
    bool getFile(const std::string& remotePath, const std::string& localPath) override;

private:
    WebDavClient& share();
    // Takes the outcome of a request: the server's words on failure.
    bool answered(bool succeeded);

    ServerCredentials credentials_;
    std::unique_ptr<WebDavClient> share_;
    bool loggedIn_ = false;
};

}  // namespace stowhaven
