#include "restore/DataRestoreOperation.h"

#include "archive/FileCipher.h"
#include "core/BackupSession.h"
#include "core/CydiaFileManager.h"
#include "core/FileSizes.h"
#include "core/Supervisor.h"
#include "core/TemporarySweep.h"
#include "core/Text.h"
#include "items/PhotoVideoManager.h"
#include "items/PreferenceFile.h"
#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Strings.h"
#include "platform/TemporaryDirectory.h"
#include "restore/DataCategories.h"
#include "restore/RestoreCommands.h"
#include "restore/RestoreReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <set>

namespace stowhaven {

namespace {

constexpr const char* kMembersList = "membersToExtract.txt";

std::string lastPathComponent(const std::string& path) { return std::filesystem::path(path).filename().string(); }

// The device folder of the albums' files that the archive of photos or videos holds.
std::optional<std::string> albumsFolderOf(const std::optional<std::string>& kind) {
    if (kind != "PHOTOS" && kind != "VIDEOS") return std::nullopt;
    return DeviceRoot::devicePathOf(TemporaryDirectory::path() + "/" + textutil::firstLetterUppered(*kind));
}

// Photos and videos go back through the library, from the albums' folders alone: the
// library's own folders in the archive are never written over the device's.
std::function<bool(const std::string&)> albumMembersOnly(const std::optional<std::string>& kind) {
    const auto folder = albumsFolderOf(kind);
    if (!folder) return nullptr;
    return [relative = folder->substr(1)](const std::string& member) {
        return member.starts_with(relative + "/") || member == relative;
    };
}

}  // namespace

DataRestoreOperation::DataRestoreOperation() {
    Supervisor::shared().notifyProgress(0.0, std::nullopt);
    // The session the restore is of, which the user may have chosen among older ones.
    backupSession_ = CydiaFileManager::shared().currentBackupSession();
    currentStorageEngine_ = Supervisor::shared().currentStorageEngine();
}

void DataRestoreOperation::main() {
    setCompletionBlock([this] {
        removeTemporaryFiles();
        removeTemporaryFolders();
    });
    operationResult_ = 0;
}

std::optional<Date> DataRestoreOperation::sessionDate() const {
    return backupSession_ ? backupSession_->sessionDate() : std::nullopt;
}

std::string DataRestoreOperation::temporaryPath(const std::string& name) {
    return TemporaryDirectory::path() + "/" + name;
}

void DataRestoreOperation::advanceStep(const std::optional<std::string>& text) {
    ++currentStepIdx_;
    const double fraction = totalSteps_ > 0 ? static_cast<double>(currentStepIdx_) / totalSteps_ : 0.0;
    Supervisor::shared().notifyProgress(fraction, text);
}

std::vector<std::string> DataRestoreOperation::ownedPaths() const {
    const DataCategory* category = activeDirectory_ ? dataCategoryNamed(*activeDirectory_) : nullptr;
    std::vector<std::string> owned = category ? category->ownedPaths : std::vector<std::string>{};
    if (const auto albums = albumsFolderOf(activeDirectory_)) owned.push_back(*albums);
    return owned;
}

void DataRestoreOperation::mergeAndUnzipData(std::uint64_t archiveSize) {
    if (!activeDirectory_) return;
    const std::string name = textutil::firstLetterUppered(*activeDirectory_);
    const std::string archive = temporaryPath(name + ".tbz");
    Supervisor::shared().systemExecute(RestoreCommands::joinParts(TemporaryDirectory::path(), *activeDirectory_, name));
    if (FileManager::sizeOfItem(archive) != archiveSize) {
        FileManager::removeItem(archive);
        failActiveKind(fmt::format("its parts couldn't be joined ({} of {} bytes; is the temporary folder full?)",
                                   FileManager::sizeOfItem(archive), archiveSize));
        return;
    }
    unzip(archive, "/");
}

void DataRestoreOperation::unzip(const std::string& archive, const std::string& target) {
    Supervisor& supervisor = Supervisor::shared();
    supervisor.notifyProgress(
        std::nullopt, fmt::format("{}: {}...", Strings::localized("UNARCHIVING_MESSAGE"), lastPathComponent(archive)));
    const std::uint64_t size = FileManager::sizeOfItem(archive);
    if (size == 0) {
        SH_LOG("<{}> is empty!", archive);
        failActiveKind("its archive is empty");
        return;
    }
    SH_LOG("Unzipping <{} [{:.3f}Mb]> into <{}>...", archive, static_cast<double>(size) / FileSizes::kBytesPerMegabyte,
           target);
    if (backupSession_ && backupSession_->encryptionKey()) {
        CydiaFileManager::decryptFileAtPath(archive);
        if (FileCipher::isEnciphered(archive)) {
            FileManager::removeItem(archive);
            failActiveKind("its archive couldn't be deciphered (another key, a damaged archive or a full disk)");
            return;
        }
    }

    bool unpacked = false;
    if (activeDirectory_ == "PREFERENCES" || activeDirectory_ == "SPRINGBOARD") {
        const auto count = extractSelectedFiles(archive, target);
        if (count) SH_LOG("Restored {} file(s)!", *count);
        unpacked = count.has_value();
    } else if (extractMembers(archive, {ownedPaths(), target}, albumMembersOnly(activeDirectory_))) {
        restoreAlbums(archive);
        unpacked = true;
    }
    if (!FileManager::removeItem(archive)) SH_LOG("Couldn't remove <{}>!", archive);
    if (!unpacked) failActiveKind(RestoreReport::kUntrustedArchive);
}

void DataRestoreOperation::failActiveKind(const std::string& reason) {
    RestoreReport::shared().add(textutil::firstLetterUppered(activeDirectory_.value_or("")) + " data", reason);
    removeTemporaryFiles();
}

std::optional<std::vector<std::string>> DataRestoreOperation::extractMembers(
    const std::string& archive, const ArchiveMembers::Placement& placement,
    const std::function<bool(const std::string&)>& chosen) {
    const auto members = ArchiveMembers::of(archive, placement);
    if (!members) return std::nullopt;
    std::vector<std::string> names;
    std::string list;
    for (const std::string& member : members->allowed()) {
        if (chosen && !chosen(member)) continue;
        names.push_back(member);
        list += member + "\n";
    }
    if (names.empty()) return names;
    const std::string listPath = temporaryPath(kMembersList);
    std::string error;
    if (!FileManager::writeFile(listPath, list, &error)) {
        SH_LOG("Couldn't write the members to unpack: {}. Nothing is restored from <{}>", error, archive);
        return std::nullopt;
    }
    Supervisor::shared().systemExecute(
        RestoreCommands::extract(archive, placement.target, listPath, placement.strip));
    FileManager::removeItem(listPath);
    members->giveToOwners(names);
    return names;
}

std::optional<std::size_t> DataRestoreOperation::extractSelectedFiles(const std::string& archive, const std::string& target) {
    const auto files = activeDirectory_ == "PREFERENCES" ? backupSession_->preferencesFileObjects()
                                                         : backupSession_->springboardDataObjects();
    std::set<std::string> wanted;
    for (const auto& file : files) {
        if (file->isSelected()) wanted.insert(file->name().substr(file->name().starts_with('/') ? 1 : 0));
    }
    const auto unpacked = extractMembers(archive, {ownedPaths(), target},
                                         [&wanted](const std::string& member) { return wanted.contains(member); });
    if (!unpacked) return std::nullopt;
    for (const std::string& member : wanted) {
        if (std::find(unpacked->begin(), unpacked->end(), member) == unpacked->end()) {
            SH_LOG("Skipping </{}>: not in the archive as a file of its own", member);
        }
    }
    return unpacked->size();
}

// The albums of the session go back into the photo library from the folder the backup
// prepared, when there is one.
void DataRestoreOperation::restoreAlbums(const std::string& archive) {
    const bool photos = archive.ends_with("Photos.tbz");
    if (!photos && !archive.ends_with("Videos.tbz")) return;
    const std::string folder = temporaryPath(photos ? "Photos" : "Videos");
    if (!FileManager::fileExists(folder) || !backupSession_->photoVideoAlbums()) return;
    for (const auto& album : *backupSession_->photoVideoAlbums()) {
        PhotoVideoManager::shared().restorePhotoVideoAlbum(*album, folder, photos);
    }
}

void DataRestoreOperation::removeTemporaryFiles() {
    if (!activeDirectory_) return;
    const std::string name = *activeDirectory_;
    TemporarySweep::removeTemporaryFilesMatching([&name](const std::string& entry) { return entry.starts_with(name); });
}

void DataRestoreOperation::removeTemporaryFolders() {
    if (activeDirectory_ != "PHOTOS" && activeDirectory_ != "VIDEOS") return;
    const std::string folder = temporaryPath(textutil::firstLetterUppered(*activeDirectory_));
    if (FileManager::fileExists(folder) && !FileManager::removeItem(folder)) SH_LOG("Can't delete <{}>", folder);
}

}  // namespace stowhaven
