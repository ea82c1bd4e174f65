#include "net/FtpClient.h"

#include "net/CurlHandle.h"
#include "net/FtpPaths.h"
#include "net/FtpRequest.h"
#include "net/FtpTransfers.h"
#include "net/ListListing.h"
#include "net/MlsdListing.h"
#include "net/ThreadedTransfer.h"
#include "platform/Log.h"

#include <fnmatch.h>

#include <functional>
#include <initializer_list>

namespace stowhaven {

namespace {

// A hostile server can't keep a listing or a tree going without end.
constexpr std::size_t kLargestListing = 64 * 1024 * 1024;
constexpr int kDeepestTree = 64;

std::size_t appendToListing(char* data, std::size_t size, std::size_t count, void* listing) {
    auto& text = *static_cast<std::string*>(listing);
    if (text.size() + size * count > kLargestListing) return 0;
    text.append(data, size * count);
    return size * count;
}

// The replies of a server that doesn't know a command: not understood, bad arguments, not
// implemented, not implemented for that argument.
bool isUnknownCommand(long reply) { return reply == 500 || reply == 501 || reply == 502 || reply == 504; }

}  // namespace

struct FtpClient::Connection {
    FtpAccount account;
    // Shared with a transfer, whose thread may outlive the call that started it.
    std::shared_ptr<CurlHandle> curl = std::make_shared<CurlHandle>();
    bool connected = false;
    std::string lastError;
    // Set once the server has said it doesn't know MLSD, so that it lists with LIST.
    bool listsWithoutMlsd = false;

    // Whether the account and PATHS can go to the server; leaves the error when not.
    bool check(std::initializer_list<const std::string*> paths) {
        auto problem = FtpPaths::accountProblem(account);
        for (const auto* path : paths) {
            if (!problem) problem = FtpPaths::problem(*path);
        }
        if (problem) fail(*problem);
        return !problem;
    }

    bool fail(std::string error) {
        lastError = curl->dialogue().clean(error);
        return false;
    }

    // Runs the call prepared on curl; WHAT names it in the log.
    bool perform(const std::string& what) {
        const CURLcode code = curl->perform();
        if (code == CURLE_OK) return true;
        SH_LOG("{} on {} failed: {}", what, account.host, curl->dialogue().tail());
        return fail(FtpRequest::failure(*curl, code));
    }

    // Sends raw COMMANDS (their paths checked) from the login folder.
    bool sendCommands(const std::vector<std::string>& commands) {
        FtpRequest::prepare(*curl, account, FtpPaths::serverUrl(account));
        curl_slist* list = nullptr;
        for (const auto& command : commands) list = curl_slist_append(list, command.c_str());
        curl->set(CURLOPT_QUOTE, list);
        curl->set(CURLOPT_NOBODY, 1L);
        const bool sent = perform(commands.front());
        curl->set(CURLOPT_QUOTE, static_cast<curl_slist*>(nullptr));
        curl_slist_free_all(list);
        return sent;
    }

    // The bytes COMMAND ("MLSD" or "LIST") sends for DIRECTORY, at most kLargestListing.
    std::optional<std::string> fetchListing(const char* command, const std::string& directory) {
        FtpRequest::prepare(*curl, account, FtpPaths::url(curl->get(), account, directory, true));
        std::string data;
        curl->set(CURLOPT_CUSTOMREQUEST, command);
        curl->set(CURLOPT_WRITEFUNCTION, &appendToListing);
        curl->set(CURLOPT_WRITEDATA, &data);
        if (!perform(std::string(command) + " of " + directory)) return std::nullopt;
        return data;
    }

    // The entries PARSE reads in DATA, the listing of DIRECTORY; nothing, leaving the error,
    // when it refuses the listing.
    std::optional<std::vector<FtpEntry>> entriesIn(
        const std::string& data, std::optional<std::vector<FtpEntry>> (*parse)(std::string_view, std::string*),
        const std::string& directory) {
        std::string problem;
        auto entries = parse(data, &problem);
        if (!entries) {
            SH_LOG("Listing of {} refused: {}", directory, problem);
            fail(problem);
        }
        return entries;
    }

    long lastReplyCode() const {
        long reply = 0;
        curl_easy_getinfo(curl->get(), CURLINFO_RESPONSE_CODE, &reply);
        return reply;
    }

    // A transfer running JOB on the shared handle, or one that has failed already when the
    // account or PATH can't be used.
    std::unique_ptr<Transfer> startTransfer(
        const std::string& path,
        std::function<TransferOutcome(CurlHandle&, const FtpAccount&, TransferProgress&)> job) {
        if (!check({&path})) return ThreadedTransfer<Transfer>::failed(lastError);
        return std::make_unique<ThreadedTransfer<Transfer>>(
            [curl = curl, account = account, job = std::move(job)](TransferProgress& progress) {
                return job(*curl, account, progress);
            });
    }
};

FtpClient::FtpClient(FtpAccount account) : connection_(std::make_unique<Connection>()) {
    connection_->account = std::move(account);
    connection_->curl->setSecret(connection_->account.password);
}

FtpClient::~FtpClient() = default;

bool FtpClient::connect() {
    auto& connection = *connection_;
    if (!connection.check({})) return false;
    FtpRequest::prepare(*connection.curl, connection.account, FtpPaths::serverUrl(connection.account));
    connection.curl->set(CURLOPT_NOBODY, 1L);
    connection.connected = connection.perform("Login as " + connection.account.login);
    return connection.connected;
}

bool FtpClient::isConnected() const { return connection_->connected; }

void FtpClient::disconnect() {
    connection_->curl->closeConnections();
    connection_->connected = false;
}

bool FtpClient::createDirectory(const std::string& path) {
    return connection_->check({&path}) && connection_->sendCommands({"MKD " + path});
}

bool FtpClient::removeDirectory(const std::string& path) {
    return connection_->check({&path}) && connection_->sendCommands({"RMD " + path});
}

bool FtpClient::deleteFile(const std::string& path) {
    return connection_->check({&path}) && connection_->sendCommands({"DELE " + path});
}

bool FtpClient::rename(const std::string& from, const std::string& to) {
    return connection_->check({&from, &to}) && connection_->sendCommands({"RNFR " + from, "RNTO " + to});
}

bool FtpClient::deleteTree(const std::string& path) {
    // Depth first; a symbolic link goes as a file, whatever it points at.
    const auto deleteBelow = [this, &path](const auto& self, const std::string& folder, int depth) -> bool {
        if (depth > kDeepestTree) return connection_->fail("the folders under " + path + " go too deep");
        const auto entries = list(folder);
        if (!entries) return false;
        for (const auto& entry : *entries) {
            const std::string child = FtpPaths::child(folder, entry.name);
            const bool deleted =
                entry.isDirectory && !entry.isSymbolicLink ? self(self, child, depth + 1) : deleteFile(child);
            if (!deleted) return false;
        }
        return removeDirectory(folder);
    };
    return deleteBelow(deleteBelow, path, 0);
}

bool FtpClient::deleteMatching(const std::string& directory, const std::string& pattern) {
    const auto entries = list(directory);
    if (!entries) return false;
    for (const auto& entry : *entries) {
        if (entry.isDirectory || fnmatch(pattern.c_str(), entry.name.c_str(), FNM_PERIOD) != 0) continue;
        if (!deleteFile(FtpPaths::child(directory, entry.name))) return false;
    }
    return true;
}

std::optional<std::vector<FtpEntry>> FtpClient::list(const std::string& directory) {
    auto& connection = *connection_;
    if (!connection.check({&directory})) return std::nullopt;
    if (!connection.listsWithoutMlsd) {
        if (const auto data = connection.fetchListing("MLSD", directory))
            return connection.entriesIn(*data, &MlsdListing::parse, directory);
        const long reply = connection.lastReplyCode();
        if (!isUnknownCommand(reply)) return std::nullopt;
        SH_LOG("{} refused MLSD ({}): listing with LIST", connection.account.host, reply);
        // A 501 may only mean that MLSD didn't take this folder, so MLSD is tried again next time.
        connection.listsWithoutMlsd = reply != 501;
    }
    const auto data = connection.fetchListing("LIST", directory);
    if (!data) return std::nullopt;
    return connection.entriesIn(*data, &ListListing::parse, directory);
}

std::optional<std::int64_t> FtpClient::sizeOf(const std::string& path) {
    auto& connection = *connection_;
    if (!connection.check({&path})) return std::nullopt;
    std::string error;
    const auto size = FtpTransfers::remoteSize(*connection.curl, connection.account, path, error);
    if (!size) connection.fail(error);
    return size;
}

std::unique_ptr<Transfer> FtpClient::startUpload(const std::string& localPath, const std::string& remotePath) {
    return connection_->startTransfer(
        remotePath, [localPath, remotePath](CurlHandle& curl, const FtpAccount& account, TransferProgress& progress) {
            return FtpTransfers::upload(curl, account, localPath, remotePath, progress);
        });
}

std::unique_ptr<Transfer> FtpClient::startDownload(const std::string& remotePath, const std::string& localPath) {
    return connection_->startTransfer(
        remotePath, [remotePath, localPath](CurlHandle& curl, const FtpAccount& account, TransferProgress& progress) {
            return FtpTransfers::download(curl, account, remotePath, localPath, progress);
        });
}

std::string FtpClient::lastError() const { return connection_->lastError; }

}  // namespace stowhaven
