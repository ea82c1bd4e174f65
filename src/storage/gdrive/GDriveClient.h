#pragma once

#include "storage/AbstractStorageWrapper.h"
#include "storage/OAuth2ServiceClient.h"
#include "storage/gdrive/GDriveReplies.h"
#include "storage/gdrive/GDriveService.h"
#include "storage/gdrive/GDriveTokens.h"

#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// The Drive v3 requests that the engine makes, everything addressed by id. Each blocks until
// it is done; on failure it leaves the service's message as the engine's error (ERRORS) and
// answers none or false.
class GDriveClient {
public:
    GDriveClient(GDriveService service, AbstractStorageWrapper& errors);

    OAuth2Tokens& tokens() { return rest_.tokens(); }
    const GDriveService& service() const { return service_; }

    // drive.about.get with the fields "user,storageQuota".
    std::optional<GDriveAbout> about();
    // drive.files.list with the search Q, every page of it.
    std::optional<std::vector<GDriveFile>> list(const std::string& q);
    // A folder in the given one, or at the top of the drive without one.
    std::optional<GDriveFile> createFolder(const std::string& name, const std::optional<std::string>& parentId);
    // Sends the local file under NAME into the folder, by a resumable upload in one piece.
    std::optional<GDriveFile> upload(const std::string& localPath, const std::string& name,
                                     const std::string& parentId);
    // The file's bytes to LOCALPATH (alt=media); nothing is left there after a failure.
    bool download(const GDriveFile& file, const std::string& localPath);
    // A folder goes with everything in it.
    bool deleteFile(const std::string& id);
    bool rename(const std::string& id, const std::string& name);

private:
    // The upload session's address, which must be on the upload host.
    std::optional<std::string> uploadSession(const std::string& name, const std::string& parentId, std::int64_t size);

    GDriveService service_;
    OAuth2ServiceClient rest_;
};

}  // namespace stowhaven
