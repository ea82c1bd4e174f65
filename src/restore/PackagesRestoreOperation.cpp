#include "restore/PackagesRestoreOperation.h"

#include "core/CydiaFile.h"
#include "core/CydiaFileManager.h"
#include "core/PackageScan.h"
#include "core/ProcessFlags.h"
#include "core/SessionDebName.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/ShellQuote.h"
#include "platform/Strings.h"
#include "platform/TemporaryDirectory.h"
#include "restore/RestoreCommands.h"
#include "restore/StorageFetch.h"
#include "storage/StorageHelperProtocol.h"

#include <fmt/format.h>

#include <filesystem>
#include <set>

namespace stowhaven {

namespace {

constexpr int kMaximumTries = 5;
// What apt-get asks for before it installs a package it can't authenticate.
constexpr const char* kForceYesRequest = "without --force-yes";
constexpr const char* kDebsDirectory = "DEBS";
// How dpkg-query reports a package that is in place and configured.
constexpr const char* kInstalledStatus = "install ok installed";

// A lock left behind by an interrupted run would stop every install.
void deleteDpkgLock() {
    const std::string lock = DeviceRoot::path("/var/lib/dpkg/lock");
    std::string error;
    if (!FileManager::removeItem(lock, &error)) SH_LOG("Could NOT delete <{}>. Error: {}", lock, error);
}

// The name the backup stored the package's file under.
// The session's package that the fetched file is of.
std::shared_ptr<CydiaFile> packageOfDeb(const std::string& fileName) {
    for (const auto& package : CydiaFileManager::shared().oldPackages()) {
        if (sessionDebName(*package) == fileName) return package;
    }
    return nullptr;
}

}  // namespace

void PackagesRestoreOperation::main() {
    DataRestoreOperation::main();
    setName("PackagesRestoreOperation");
    idxFileInIndex_ = -1;
    CydiaFileManager& manager = CydiaFileManager::shared();
    nbPackages_ = static_cast<std::int64_t>(manager.countRestorePackages());
    setTotalSteps(static_cast<double>(nbPackages_ + 1));
    // The catalogue's start-up clean-up holds the package database while it runs.
    manager.waitForCleanUpJobs();
    Supervisor::shared().systemExecute(RestoreCommands::kAptGetUpdate);
    restore();

    // A fetch that never answered leaves the storage's word with its package.
    if (idxFileInIndex_ < 0 || idxFileInIndex_ >= nbPackages_ || !engine()) return;
    if (const auto message = engine()->errorMessage()) {
        const auto packages = manager.oldPackages();
        if (static_cast<std::size_t>(idxFileInIndex_) < packages.size()) {
            packages[static_cast<std::size_t>(idxFileInIndex_)]->setInstallLog(*message);
        }
    }
}

// The installs' outputs can claim success for a package that is not in place (dpkg left
// it half-configured) and say nothing of a package whose file the session lacks. Only the
// device's database tells; when it can't be read, no selected package counts as restored.
void PackagesRestoreOperation::markPackagesStillMissing() {
    std::set<std::string> installed;
    if (const auto lines = PackageScan::lines()) {
        for (const std::string& line : *lines) {
            const auto scanned = PackageScan::parse(line);
            if (scanned && scanned->status == kInstalledStatus) installed.insert(scanned->identifier);
        }
    }
    for (const auto& package : CydiaFileManager::shared().oldPackages()) {
        if (!package->isRestoreSelected() || installed.contains(textutil::orNull(package->packageName()))) continue;
        package->setMissingAfterRestore(true);
        const std::string said = fmt::format("<{}> is not installed on the device after the restore.",
                                             textutil::orNull(package->packageName()));
        SH_LOG("{}", said);
        const std::string log = package->installLog().value_or("");
        package->setInstallLog(log.empty() ? said : log + "\n" + said);
    }
}

bool PackagesRestoreOperation::stopsForCancel() const { return isCanceled() || Supervisor::shared().isCanceled(); }

void PackagesRestoreOperation::restore() {
    if (stopsForCancel() || nbPackages_ == 0) return;
    deleteDpkgLock();
    Supervisor& supervisor = Supervisor::shared();
    supervisor.notifyProgress(std::nullopt, Strings::localized("RESTORING_SELECTED_PACKAGES"));
    if (gRestoreFromDebsEnabled && supervisor.isCloudStorage()) {
        restorePackagesFromDebs();
    } else {
        restorePackagesFromCydia();
    }
    if (!stopsForCancel()) markPackagesStillMissing();
}

void PackagesRestoreOperation::restorePackagesFromCydia() {
    for (const auto& package : CydiaFileManager::shared().oldPackages()) {
        if (stopsForCancel()) return;
        const std::string name = textutil::orNull(package->name());
        if (!package->isRestoreSelected()) {
            advanceStep(fmt::format("{}: {}...", name, Strings::localized("SKIPPING_MESSAGE")));
            continue;
        }
        advanceStep(fmt::format("<{}>", name));
        installPackage(package);
    }
}

void PackagesRestoreOperation::installPackage(const std::shared_ptr<CydiaFile>& package) {
    const std::string name = textutil::orNull(package->name());
    const std::string packageName = textutil::orNull(package->packageName());
    package->setInstallLog("");
    const auto identifier = ShellQuote::packageIdentifier(packageName);
    if (!identifier) {
        package->setInstallLog(fmt::format("Skipping <{}>: not a package name", packageName));
        return;
    }
    Supervisor& supervisor = Supervisor::shared();
    const std::string log = TemporaryDirectory::path() + "/installLog.txt";
    for (int attempt = 0; attempt < kMaximumTries; ++attempt) {
        supervisor.systemExecute(RestoreCommands::aptGetInstall(*identifier, log, false));
        if (FileManager::contentsOfFile(log).value_or("").find(kForceYesRequest) != std::string::npos) {
            supervisor.systemExecute(RestoreCommands::aptGetInstall(*identifier, log, true));
        }
        std::string error;
        const auto text = FileManager::contentsOfFile(log, &error);
        package->setInstallLog(text ? *text : Strings::format("ERROR_INSTALL_LOG", error));
        const bool installed = package->isSuccessfullyInstalled();
        const bool existed = package->isAlreadyInstalled();
        SH_LOG("{}{}[{}] {{Installed:{:d} | Existed:{:d}}}", attempt == 0 ? "" : fmt::format("Retry #{}: ", attempt),
               name, packageName, installed, existed);
        if (installed || existed) break;
        SH_LOG("{}", package->installLog().value_or(""));
    }
    CydiaFileManager::shared().addCurrentPackage(package);
    package->setBackupSelected(true);
    if (!FileManager::removeItem(log)) SH_LOG("Couldn't remove <{}>!", log);
}

void PackagesRestoreOperation::restorePackagesFromDebs() {
    // Each fetch reports through the engine's hooks before loadFile returns: the next one
    // follows in this loop rather than from inside the hook.
    while (fetchNextDeb()) {
    }
    if (engine()) engine()->setSuccessSelector({}, {});
}

bool PackagesRestoreOperation::fetchNextDeb() {
    ++idxFileInIndex_;
    const auto packages = CydiaFileManager::shared().oldPackages();
    if (idxFileInIndex_ >= nbPackages_ || static_cast<std::size_t>(idxFileInIndex_) >= packages.size()) {
        installLocalDebs();
        return false;
    }
    const auto& package = packages[static_cast<std::size_t>(idxFileInIndex_)];
    advanceStep(fmt::format("Fetching <{}> ...", textutil::orNull(package->name())));
    if (!ShellQuote::packageIdentifier(textutil::orNull(package->packageName()))) return true;
    if (!engine() || !sessionDate()) {
        SH_LOG("No storage to fetch <{}> from!", textutil::orNull(package->packageName()));
        return true;
    }
    bool answered = false;
    fetchSessionFile(*engine(), sessionDebName(*package), *sessionDate(), kDebsDirectory, &answered);
    if (!answered) SH_LOG("The storage never answered for <{}>!", sessionDebName(*package));
    return answered;
}

void PackagesRestoreOperation::installLocalDebs() {
    Supervisor& supervisor = Supervisor::shared();
    supervisor.notifyProgress(std::nullopt, "Installing local debs...");
    deleteDpkgLock();
    const std::string log = supervisor.getTemporaryFileName(false);
    const std::string folder = TemporaryDirectory::path();
    std::string error;
    const auto entries = FileManager::contentsOfDirectory(folder, &error);
    if (!entries) {
        SH_LOG("{}", error);
        return;
    }
    for (const std::string& entry : *entries) {
        if (std::filesystem::path(entry).extension() != ".deb") continue;
        if (!Platform::current().reachability().isConnectedToNetwork()) {
            SH_LOG("No network. Skipping <{}>", entry);
            continue;
        }
        supervisor.notifyProgress(std::nullopt, fmt::format("Installing <{}>...", entry));
        supervisor.systemExecute(RestoreCommands::dpkgInstall(folder + "/" + entry, log));
        const std::string said = FileManager::contentsOfFile(log).value_or("");
        if (!textutil::containsCaseInsensitive(said, "Setting up ")) SH_LOG("{}", said);
        if (const auto package = packageOfDeb(entry)) package->setInstallLog(said);
    }
    FileManager::removeItem(log);
}

}  // namespace stowhaven
