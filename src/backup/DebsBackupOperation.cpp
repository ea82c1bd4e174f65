#include "backup/DebsBackupOperation.h"

#include "backup/BackupCommands.h"
#include "backup/PackageRepack.h"
#include "backup/PackageRepackReport.h"
#include "core/BackupSession.h"
#include "core/CydiaFileManager.h"
#include "core/FileSizes.h"
#include "core/ProcessFlags.h"
#include "core/SessionDebName.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/ShellQuote.h"
#include "platform/Strings.h"
#include "platform/TemporaryDirectory.h"
#include "storage/StorageLayout.h"

#include <fmt/format.h>

#include <filesystem>
#include <map>

namespace stowhaven {

namespace {

constexpr const char* kDirectory = "DEBS";

std::string cacheFolder() { return TemporaryDirectory::path() + "/debs"; }

bool isConnectedToNetwork() { return Platform::current().reachability().isConnectedToNetwork(); }

// The progress of a step that is not the last: exactly 1.0 is shown as 0.9999.
double belowTheEnd(double fraction) { return fraction == 1.0 ? 0.9999 : fraction; }

}  // namespace

std::string DebsBackupOperation::cleanedName(const std::string& fileName) {
    return textutil::replacingAll(textutil::lowered(fileName), ":", "_");
}

void DebsBackupOperation::main() {
    setDirectoryName(kDirectory);
    setName("Debs_Backup");
    if (!gBackupDebsEnabled) {
        setOperationResult(0);
        return;
    }
    setOperationResult(0);
    // A package counts when it is chosen for backup and installed by the user's choice.
    if (CydiaFileManager::shared().countCurrentPackages() == 0 || !sessionDate() || !engine()) return;
    createDebsDirectory();
    if (operationResult() == 0) downloadDebsFromCydia();
    if (operationResult() == 0) uploadDebs();
}

void DebsBackupOperation::createDebsDirectory() {
    Supervisor& supervisor = Supervisor::shared();
    supervisor.logMemoryUsage();
    if (stopsForCancel()) return;
    supervisor.notifyProgress(std::nullopt,
                              fmt::format("{} <{}/DEBS>…", Strings::localized("CREATING_DIRECTORY_MESSAGE"),
                                          StorageLayout::stamp(*sessionDate())));
    engine()->createDirectory(kDirectory, *sessionDate());
}

void DebsBackupOperation::downloadDebsFromCydia() {
    const std::string cache = cacheFolder();
    const std::string partial = cache + "/archives/partial";
    std::string error;
    if (!FileManager::createDirectory(partial, true, &error)) SH_LOG("{}", error);
    if (!FileManager::fileExists(partial)) {
        SH_LOG("Couldn't find <{}> directory!", partial);
        setOperationResult(1);
        return;
    }
    Supervisor& supervisor = Supervisor::shared();
    CydiaFileManager::shared().waitForCleanUpJobs();
    const std::string log = supervisor.getTemporaryFileName(false);
    supervisor.systemExecute(BackupCommands::aptGetUpdate(cache, log));
    downloadPackages(cache);
    collectDownloadedDebs(cache + "/archives");
    if (supervisor.lowLevelGetBooleanPreferencesDataForKey("RepackMissingDebsEnabled")) {
        repackMissingDebs(cache + "/archives");
    }
    if (supervisor.isCanceled()) setOperationResult(1);
}

void DebsBackupOperation::downloadPackages(const std::string& cache) {
    Supervisor& supervisor = Supervisor::shared();
    const std::vector<std::string> lines = textutil::split(backupSession()->rawData().value_or(""), '\n');
    const std::size_t count = lines.size();
    std::size_t position = 0;
    for (const std::string& line : lines) {
        ++position;
        const std::vector<std::string> fields = textutil::split(line, '\t');
        if (fields.size() < 2) continue;
        const std::string identifier = textutil::trimmed(fields[1]);
        if (identifier.empty()) continue;
        supervisor.notifyProgress(belowTheEnd(static_cast<double>(position) / static_cast<double>(count)),
                                  fmt::format("DEB D/L: {}...", fields[0]));
        const std::string log = supervisor.getTemporaryFileName(false);
        std::optional<std::string> text;
        if (!isConnectedToNetwork()) {
            text = fmt::format("No network. Skipping <{}>", identifier);
            SH_LOG("{}", *text);
        } else if (const auto plain = ShellQuote::packageIdentifier(identifier)) {
            supervisor.systemExecute(BackupCommands::aptGetDownload(*plain, cache, log));
            text = FileManager::contentsOfFile(log);
        } else {
            text = fmt::format("Skipping <{}>: not a package name", identifier);
        }
        // Every log read is kept, whatever it says.
        if (text) appendErrorMsg("\n" + *text);
        if (supervisor.isCanceled()) {
            setOperationResult(1);
            break;
        }
    }
}

void DebsBackupOperation::collectDownloadedDebs(const std::string& archives) {
    std::string error;
    const auto entries = FileManager::contentsOfDirectory(archives, &error);
    if (!entries) {
        SH_LOG("{}", error);
        setOperationResult(0);
        return;
    }
    for (const std::string& entry : *entries) {
        if (!entry.ends_with(kArchitectureSuffix)) {
            SH_LOG("Skipping <{}>...", entry);
            continue;
        }
        const std::string cleaned = archives + "/" + cleanedName(entry);
        bool isDirectory = false;
        if (FileManager::fileExists(cleaned, isDirectory) && !isDirectory) {
            debsToUpload_.push_back(cleaned);
        } else if (std::string moveError; FileManager::moveItem(archives + "/" + entry, cleaned, &moveError)) {
            debsToUpload_.push_back(cleaned);
        } else {
            SH_LOG("Skipping <{}>... {}", entry, moveError);
        }
    }
}

void DebsBackupOperation::repackMissingDebs(const std::string& archives) {
    std::map<std::string, std::string> installedVersions;
    for (const auto& package : CydiaFileManager::shared().currentPackages()) {
        if (package->packageName() && package->version())
            installedVersions[*package->packageName()] = *package->version();
    }
    for (const std::string& line : textutil::split(backupSession()->rawData().value_or(""), '\n')) {
        if (Supervisor::shared().isCanceled()) return;
        const std::vector<std::string> fields = textutil::split(line, '\t');
        if (fields.size() < 2) continue;
        const std::string identifier = textutil::trimmed(fields[1]);
        const auto version = installedVersions.find(identifier);
        if (version == installedVersions.end() ||
            FileManager::isRegularFile(archives + "/" + sessionDebName(identifier, version->second))) {
            continue;
        }
        Supervisor::shared().notifyProgress(std::nullopt, fmt::format("Repacking <{}>...", fields[0]));
        const auto outcome = PackageRepack::repack(identifier, archives, cacheFolder() + "/repack");
        const std::string description = PackageRepack::describe(identifier, outcome);
        SH_LOG("{}", description);
        appendErrorMsg("\n" + description);
        PackageRepackReport::add(description);
        if (!outcome.debPath.empty()) debsToUpload_.push_back(outcome.debPath);
    }
}

void DebsBackupOperation::uploadDebs() {
    Supervisor& supervisor = Supervisor::shared();
    const std::size_t count = debsToUpload_.size();
    std::size_t uploaded = 0;
    for (const std::string& path : debsToUpload_) {
        const std::string fileName = std::filesystem::path(path).filename().string();
        if (!isConnectedToNetwork() || supervisor.isCanceled()) {
            // A cancel gets the same words as a lost network.
            appendErrorMsg(fmt::format("\nNo network. Skipping <{}>", fileName));
            SH_LOG("No network. Skipping <{}>", fileName);
            setOperationResult(1);
            return;
        }
        const std::uint64_t size = FileManager::sizeOfItem(path);
        if (size == 0) {
            SH_LOG("<{}> is empty!", path);
            continue;
        }
        SH_LOG("\tUploading deb <[{:.3f}Mb]> for <{}>...", static_cast<double>(size) / FileSizes::kBytesPerMegabyte,
               fileName);
        // A whole-number quotient, as the bar has it: 0 until the end.
        const double fraction = static_cast<double>(uploaded / count);
        supervisor.notifyProgress(belowTheEnd(fraction),
                                  fmt::format("Uploading <{}>...", textutil::split(fileName, '_')[0]));
        engine()->uploadFile(path, *sessionDate(), kDirectory);
        ++uploaded;
    }
}

}  // namespace stowhaven
