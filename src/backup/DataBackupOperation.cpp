#include "backup/DataBackupOperation.h"

#include "archive/FileCipher.h"
#include "backup/BackupCommands.h"
#include "core/BackupSession.h"
#include "core/CydiaFileManager.h"
#include "core/FileSizes.h"
#include "core/ProcessFlags.h"
#include "core/SplitSize.h"
#include "core/Supervisor.h"
#include "core/TemporarySweep.h"
#include "core/Text.h"
#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Strings.h"
#include "platform/TemporaryDirectory.h"
#include "storage/StorageLayout.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

namespace stowhaven {

namespace {

double megaBytes(std::uint64_t bytes) { return static_cast<double>(bytes) / FileSizes::kBytesPerMegabyte; }

}  // namespace

DataBackupOperation::DataBackupOperation() {
    Supervisor::shared().notifyProgress(0.0, std::nullopt);
    const auto sessions = CydiaFileManager::shared().backupSessions();
    if (!sessions.empty()) backupSession_ = sessions.back();
    splitSizeInMegaBytes_ = settledSplitSizeInMegaBytes();
}

std::string DataBackupOperation::capitalizedName() const { return textutil::firstLetterUppered(directoryName_); }

std::string DataBackupOperation::temporaryPath(const std::string& name) {
    return TemporaryDirectory::path() + "/" + name;
}

std::string DataBackupOperation::archivePath() const { return temporaryPath(capitalizedName() + ".tbz"); }

void DataBackupOperation::nameOperation() { setName(capitalizedName() + "_Backup"); }

bool DataBackupOperation::stopsForCancel() {
    if (!Supervisor::shared().isCanceled()) return false;
    operationResult_ = 1;
    return true;
}

std::optional<Date> DataBackupOperation::sessionDate() const {
    return backupSession_ ? backupSession_->sessionDate() : std::nullopt;
}

std::shared_ptr<StorageHelperProtocol> DataBackupOperation::engine() const {
    return Supervisor::shared().currentStorageEngine();
}

void DataBackupOperation::main() {
    nameOperation();
    // Whichever way main() ends, the kind's working files go.
    setCompletionBlock([this] {
        removeTemporaryFiles();
        removeTemporaryFolders();
    });
    operationResult_ = 0;
    if (!sessionDate() || !engine()) {
        SH_LOG("No session to back up <{}> for!", directoryName_);
        operationResult_ = 1;
        return;
    }
    if (directoryName_ == "APPLICATIONS_DATA") {
        SH_LOG("{} already created!", directoryName_);
    } else {
        createDataDirectory();
    }
    if (operationResult_ == 0) archiveData();
    if (operationResult_ == 0) uploadDataIndexToCloud();
    if (operationResult_ == 0) uploadDataToCloud();
}

void DataBackupOperation::createDataDirectory() {
    if (stopsForCancel()) return;
    Supervisor& supervisor = Supervisor::shared();
    supervisor.logMemoryUsage();
    SH_LOG("Processing <{}>...", capitalizedName());
    SH_LOG("\tCreating data dir for <{}>...", capitalizedName());
    if (stopsForCancel()) return;
    supervisor.notifyProgress(std::nullopt, fmt::format("{} <{}/{}>…", Strings::localized("CREATING_DIRECTORY_MESSAGE"),
                                                        StorageLayout::stamp(*sessionDate()), directoryName_));
    engine()->createDirectory(directoryName_, *sessionDate());
}

void DataBackupOperation::archiveData() {
    if (stopsForCancel()) return;
    Supervisor& supervisor = Supervisor::shared();
    supervisor.logMemoryUsage();
    SH_LOG("\tArchiving data for <{}>...", capitalizedName());
    supervisor.notifyProgress(std::nullopt,
                              fmt::format("{}: {}...", Strings::localized("ARCHIVING_DATA"), capitalizedName()));
    if (!zipDataWithCompression(false)) operationResult_ = 1;
}

bool DataBackupOperation::zipDataWithCompression(bool compressed) {
    if (stopsForCancel()) return false;
    SH_LOG("\tZipping data for <{}>...", zipDir_);
    Supervisor& supervisor = Supervisor::shared();
    supervisor.notifyProgress(std::nullopt, fmt::format("{}: {}...", Strings::localized("ZIPPING_MESSAGE"), zipDir_));
    // A host's tar makes an empty archive of a missing folder, which would stand in for the
    // data as if there were none to take.
    if (!FileManager::fileExists(DeviceRoot::path(zipDir_))) return finishArchive();
    supervisor.systemExecute(BackupCommands::createArchive(archivePath(), compressed, zipDir_));
    if (!FileManager::isRegularFile(archivePath())) {
        fail("tar", "archive", capitalizedName());
        return false;
    }
    return finishArchive();
}

bool DataBackupOperation::finishArchive() {
    if (!FileManager::isRegularFile(archivePath())) {
        SH_LOG("Couldn't create {} from {}", archivePath(), zipDir_);
        return false;
    }
    return sealArchive(zipDir_, archivePath()) && splitArchiveWithIndex(archivePath());
}

bool DataBackupOperation::sealArchive(const std::string& source, const std::string& archive) {
    const std::string subject = std::filesystem::path(archive).filename().string();
    const std::string whole = archive + BackupCommands::kWholeArchiveSuffix;
    Supervisor::shared().systemExecute(BackupCommands::markWholeArchive(archive, whole));
    const bool isWhole = FileManager::fileExists(whole);
    FileManager::removeItem(whole);
    if (!isWhole) {
        fail("tar", "archive", subject);
        return false;
    }
    encrypt(source, archive);
    if (gEncryptBackupEnabled && backupSession_ && backupSession_->encryptionKey() &&
        !FileCipher::isEnciphered(archive)) {
        fail("openssl", "encipher", subject);
        return false;
    }
    return true;
}

void DataBackupOperation::fail(const std::string& tool, const std::string& step, const std::string& subject) {
    std::string message = fmt::format("{} couldn't {} <{}>", tool, step, subject);
    const auto space = FileManager::attributesOfFileSystem(TemporaryDirectory::path());
    if (space) message += fmt::format(" ({:.3f}Mb free in the temporary folder)", megaBytes(space->freeSize));
    SH_LOG("{}", message);
    failure_.set(message);
    operationResult_ = 1;
}

void DataBackupOperation::encrypt(const std::string& source, const std::string& path) {
    if (!gEncryptBackupEnabled || !backupSession_ || !backupSession_->encryptionKey()) return;
    SH_LOG("\tEncrypting data for <{}>...", source);
    Supervisor::shared().notifyProgress(std::nullopt,
                                        fmt::format("{}: {}...", Strings::localized("ENCRYPTING_MESSAGE"), source));
    CydiaFileManager::encryptFileAtPath(path);
}

bool DataBackupOperation::splitArchiveWithIndex(const std::string& archive) {
    const std::string upperName = textutil::uppered(std::filesystem::path(archive).stem().string());
    const std::uint64_t size = FileManager::sizeOfItem(archive);
    Supervisor::shared().systemExecute(
        BackupCommands::split(TemporaryDirectory::path(), splitSizeInMegaBytes_, archive, upperName));
    std::uint64_t listed = 0;
    for (const std::string& part : textutil::split(
             FileManager::contentsOfFile(temporaryPath(upperName + ".idx")).value_or(""), '\n')) {
        if (!part.empty()) listed += FileManager::sizeOfItem(temporaryPath(part));
    }
    if (listed == size) return true;
    fail("split", "cut into parts", std::filesystem::path(archive).filename().string());
    return false;
}

void DataBackupOperation::uploadDataIndexToCloud() {
    if (stopsForCancel()) return;
    Supervisor& supervisor = Supervisor::shared();
    supervisor.logMemoryUsage();
    supervisor.notifyProgress(std::nullopt,
                              fmt::format("{}: {}...", Strings::localized("UPLOADING_DATA_INDEX"), capitalizedName()));
    const std::string index = temporaryPath(directoryName_ + ".idx");
    filesInIndex_ = textutil::split(FileManager::contentsOfFile(index).value_or(""), '\n');
    std::erase(filesInIndex_, "");
    if (filesInIndex_.empty()) {
        operationResult_ = 0;
        return;
    }
    const std::uint64_t size = FileManager::sizeOfItem(index);
    if (size == 0) {
        operationResult_ = 0;
        SH_LOG("<{}> is empty!", index);
        return;
    }
    SH_LOG("\tUploading data index <[{:.3f}Mb]> for <{}>...", megaBytes(size), capitalizedName());
    if (stopsForCancel()) return;
    engine()->uploadFile(index, *sessionDate(), std::nullopt);
}

void DataBackupOperation::uploadDataToCloud() {
    if (stopsForCancel()) return;
    Supervisor& supervisor = Supervisor::shared();
    supervisor.logMemoryUsage();
    const std::size_t count = filesInIndex_.size();
    std::size_t position = 0;
    for (const std::string& name : filesInIndex_) {
        ++position;
        const std::string path = temporaryPath(name);
        const std::uint64_t size = FileManager::sizeOfItem(path);
        const std::string sizeText = fmt::format("{:.3f}Mb", megaBytes(size));
        const std::string uploading = Strings::localized("UPLOADING_DATA");
        supervisor.notifyProgress(std::nullopt,
                                  count == 1 ? fmt::format("{}: {}\n[{}]", uploading, capitalizedName(), sizeText)
                                             : fmt::format("{}: {}\n{} [{} of {} parts]", uploading, capitalizedName(),
                                                           sizeText, position, count));
        if (stopsForCancel()) return;
        if (size == 0) {
            operationResult_ = 0;
            SH_LOG("<{}> is empty!", path);
            return;
        }
        SH_LOG("\tUploading data {} for <{}>...", sizeText, capitalizedName());
        engine()->uploadFile(path, *sessionDate(), directoryName_);
    }
}

void DataBackupOperation::removeTemporaryFiles() {
    const bool listed = TemporarySweep::removeTemporaryFilesMatching([this](const std::string& name) {
        return name.starts_with(directoryName_) ||
               (directoryName_ == "DEBS" && std::filesystem::path(name).extension() == ".deb");
    });
    if (listed) SH_LOG("Removed <{}> temporary files!", directoryName_);
}

void DataBackupOperation::removeTemporaryFolders() {
    std::optional<std::string> folder;
    if (directoryName_ == "DEBS") {
        folder = "debs";
    } else if (directoryName_ == "PHOTOS" || directoryName_ == "VIDEOS") {
        folder = capitalizedName();
    }
    if (folder && FileManager::fileExists(temporaryPath(*folder)) && !FileManager::removeItem(temporaryPath(*folder))) {
        SH_LOG("Can't delete <{}>", *folder);
    }
    SH_LOG("Removed <{}> temporary folders!", directoryName_);
}

}  // namespace stowhaven
