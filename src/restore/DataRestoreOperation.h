#pragma once

#include "platform/Date.h"
#include "platform/dispatch/Monitored.h"
#include "platform/dispatch/Operation.h"
#include "restore/ArchiveMembers.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

class BackupSession;
class StorageHelperProtocol;

// The base of every step of a restore: it holds the session being restored and the engine,
// counts the steps for the progress, and joins, deciphers and unpacks a kind's archive
// into the device. What an archive holds is looked at before anything is unpacked: a
// member that would land outside the places its kind owns is left in the archive.
class DataRestoreOperation : public Operation {
public:
    // Runs on the thread that builds the restore's list: takes the session the restore is
    // of (the current one) and the current engine.
    DataRestoreOperation();

    // Sets the clean-up of the kind's working files for when the operation ends.
    void main() override;

    std::int64_t operationResult() const { return operationResult_; }
    std::string errorMsg() const { return errorMsg_.copy(); }
    const std::optional<std::string>& activeDirectory() const { return activeDirectory_; }
    const std::shared_ptr<BackupSession>& backupSession() const { return backupSession_; }

protected:
    void setOperationResult(std::int64_t result) { operationResult_ = result; }
    void setActiveDirectory(std::optional<std::string> directory) { activeDirectory_ = std::move(directory); }
    void appendErrorMsg(const std::string& text) {
        errorMsg_.with([&text](std::string& message) { message += text; });
    }
    std::shared_ptr<StorageHelperProtocol> engine() const { return currentStorageEngine_; }
    std::optional<Date> sessionDate() const;
    static std::string temporaryPath(const std::string& name);

    // The progress of steps: the next one done, with its text if any.
    void setTotalSteps(double steps) { totalSteps_ = steps; }
    void advanceStep(const std::optional<std::string>& text);

    // Joins the fetched parts of the active kind, ARCHIVE_SIZE bytes in all, and unpacks
    // them into the device. A join that comes out short (a full temporary folder) unpacks
    // nothing.
    void mergeAndUnzipData(std::uint64_t archiveSize);
    // Deciphers ARCHIVE when the session has a key, unpacks it into the device folder
    // TARGET ("/" for archives whose members carry whole device paths) and removes it.
    // An archive that is empty, isn't deciphered or can't be trusted as a whole unpacks
    // nothing and fails the active kind.
    void unzip(const std::string& archive, const std::string& target);
    // The active kind goes into the restore's report with REASON, and its working files go.
    void failActiveKind(const std::string& reason);
    // Unpacks into the device the members of ARCHIVE that PLACEMENT allows and, when
    // given, CHOSEN keeps, and gives them the owner of the place they land in; answers the
    // names unpacked, or nothing, with a log line, when the archive can't be trusted.
    static std::optional<std::vector<std::string>> extractMembers(
        const std::string& archive, const ArchiveMembers::Placement& placement,
        const std::function<bool(const std::string&)>& chosen = nullptr);

    virtual void removeTemporaryFiles();
    virtual void removeTemporaryFolders();
    // The device paths that an archive of this operation may write to: by default those of
    // the active kind.
    virtual std::vector<std::string> ownedPaths() const;

    std::int64_t idxFileInIndex_ = 0;
    std::int64_t currentStepIdx_ = 0;

private:
    // Unpacks the chosen preference or SpringBoard files; answers how many, or nothing when
    // the archive can't be trusted.
    std::optional<std::size_t> extractSelectedFiles(const std::string& archive, const std::string& target);
    void restoreAlbums(const std::string& archive);

    double totalSteps_ = 0;
    std::int64_t operationResult_ = 0;
    std::optional<std::string> activeDirectory_;
    Monitored<std::string> errorMsg_;
    std::shared_ptr<BackupSession> backupSession_;
    std::shared_ptr<StorageHelperProtocol> currentStorageEngine_;
};

}  // namespace stowhaven
