#pragma once

#include "platform/Date.h"
#include "platform/dispatch/Monitored.h"
#include "platform/dispatch/Operation.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

class BackupSession;
class StorageHelperProtocol;

// One kind of bulk data of a backup (NAME, say "NOTES"): the folder archived by tar into
// TMP/Name.tbz, enciphered when the session asks for it, cut by split into NAME-000,
// NAME-001... of the part size, listed in NAME.idx, and sent to the current engine: the index
// into the session directory, the parts into its folder NAME. Subclasses give the kind and
// the path and override the steps their kind needs.
//
// Every step checks the result and the cancel first; a result of 1 stops the steps that
// follow, and nothing else: the next operation of the backup still runs. The tools say
// nothing of how they went, so each result is checked: an archive tar can't read whole,
// a file left plain by the cipher or parts that don't add up to the archive (a full
// temporary folder, a missing tool) fail the kind, and with it the backup.
class DataBackupOperation : public Operation {
public:
    static constexpr std::uint64_t kDefaultSplitSizeInMegaBytes = 20;

    // Runs on the thread that builds the backup's list, before any operation starts: takes
    // the newest session and the part size of the settings (0 or none becomes 20, stored).
    DataBackupOperation();

    void main() override;

    std::int64_t operationResult() const { return operationResult_; }
    const std::string& directoryName() const { return directoryName_; }
    const std::string& zipDir() const { return zipDir_; }
    std::string errorMsg() const { return errorMsg_.copy(); }
    // What failed, naming the tool and the step; nothing while all went well.
    std::optional<std::string> failure() const { return failure_.copy(); }
    const std::shared_ptr<BackupSession>& backupSession() const { return backupSession_; }
    const std::vector<std::string>& filesInIndex() const { return filesInIndex_; }
    std::uint64_t splitSizeInMegaBytes() const { return splitSizeInMegaBytes_; }

    // "Notes" for "NOTES": the first letter upper case, the rest lower case.
    std::string capitalizedName() const;
    // TMP/Name.tbz
    virtual std::string archivePath() const;

protected:
    void setOperationResult(std::int64_t result) { operationResult_ = result; }
    void setDirectoryName(std::string name) { directoryName_ = std::move(name); }
    void setZipDir(std::string path) { zipDir_ = std::move(path); }
    void appendErrorMsg(const std::string& text) {
        errorMsg_.with([&text](std::string& message) { message += text; });
    }
    std::vector<std::string>& mutableFilesInIndex() { return filesInIndex_; }

    // "Name_Backup".
    void nameOperation();
    // Supervisor's cancel, which every step honours with the result 1.
    bool stopsForCancel();
    // The session's date, or nothing without a session (which leaves nothing to do).
    std::optional<Date> sessionDate() const;
    std::shared_ptr<StorageHelperProtocol> engine() const;
    static std::string temporaryPath(const std::string& name);

    virtual void createDataDirectory();
    virtual void archiveData();
    virtual bool zipDataWithCompression(bool compressed);
    virtual void uploadDataIndexToCloud();
    virtual void uploadDataToCloud();
    virtual void removeTemporaryFiles();
    virtual void removeTemporaryFolders();

    // Enciphers the file at PATH in place when the setting is on and the session has a key;
    // SOURCE names it in the progress text.
    void encrypt(const std::string& source, const std::string& path);
    // Checks that tar reads ARCHIVE whole, then enciphers it as encrypt() does and checks
    // that it is; false, with the kind failed, when a step left less than its whole result.
    bool sealArchive(const std::string& source, const std::string& archive);
    // Cuts the archive into parts listed in the index; false, with the kind failed, when the
    // parts listed don't add up to the archive.
    bool splitArchiveWithIndex(const std::string& archive);
    // Seals the archive and splits it; false with a log line when there is no archive.
    bool finishArchive();
    // The kind fails: TOOL couldn't do STEP (such as "archive") for SUBJECT.
    void fail(const std::string& tool, const std::string& step, const std::string& subject);

private:
    std::int64_t operationResult_ = 0;
    std::string directoryName_;
    std::string zipDir_;
    Monitored<std::string> errorMsg_;
    Monitored<std::optional<std::string>> failure_;
    std::shared_ptr<BackupSession> backupSession_;
    std::vector<std::string> filesInIndex_;
    std::uint64_t splitSizeInMegaBytes_ = kDefaultSplitSizeInMegaBytes;
};

}  // namespace stowhaven
