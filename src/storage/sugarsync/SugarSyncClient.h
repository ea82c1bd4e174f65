#pragma once

#include "net/RestClient.h"
#include "storage/AbstractStorageWrapper.h"
#include "storage/sugarsync/SugarSyncReplies.h"
#include "storage/sugarsync/SugarSyncRetries.h"
#include "storage/sugarsync/SugarSyncService.h"
#include "storage/sugarsync/SugarSyncSession.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace stowhaven {

// The requests of the SugarSync API that the engine makes, everything but the user record
// addressed by a reference the service handed out, which must be on the API host itself.
// Each blocks until it is done, sent again by the retry rule of SugarSyncRetries; on failure
// it leaves its account as the engine's error (ERRORS) and answers none or false.
class SugarSyncClient {
public:
    SugarSyncClient(SugarSyncService service, AbstractStorageWrapper& errors);

    SugarSyncSession& session() { return *session_; }
    const SugarSyncService& service() const { return service_; }

    std::optional<SugarSyncUser> user();
    std::optional<SugarSyncContents> contents(const std::string& folderRef);
    // A folder or a file entry made in the folder from its XML body; the new reference.
    std::optional<std::string> create(const std::string& folderRef, const std::string& body);
    // A folder's or a file's record changed from its XML body (a rename).
    bool update(const std::string& ref, const std::string& body);
    bool remove(const std::string& ref);
    // The local file's bytes as the file entry's content, streamed from disk.
    bool putData(const std::string& localPath, const std::string& fileRef);
    // The content at FILEDATA into LOCALPATH; nothing is left there after a failure.
    bool download(const std::string& fileData, const std::string& localPath);

private:
    enum class Transfer { None, Upload, Download };
    // The request by the retry rule: a reply with a success status and a body READ accepts
    // (an empty body always), or none with the engine's error.
    template <typename Read>
    std::optional<RestReply> call(RestRequest request, Read read, Transfer transfer = Transfer::None);
    RestReply perform(const RestRequest& request, Transfer transfer, std::string& error);
    bool fail(const std::string& message);

    SugarSyncService service_;
    AbstractStorageWrapper& errors_;
    SugarSyncRetries retries_;
    std::shared_ptr<SugarSyncSession> session_;
    // Calls on one REST client must not overlap; transfers run on connections of their own.
    std::mutex mutex_;
    RestClient client_;
};

}  // namespace stowhaven
