#include "cli/RestoreCommand.h"

#include "cli/CatalogueLoad.h"
#include "cli/KeyFile.h"
#include "cli/OperationRun.h"
#include "cli/ProgressLine.h"
#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/Terminal.h"
#include "restore/RestoreOperation.h"
#include "restore/RestoreSelection.h"
#include "storage/StorageLayout.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>

namespace stowhaven {

namespace {

// The session of the stamp among all of the storage's; nothing without one.
std::shared_ptr<BackupSession> sessionOfStamp(const std::string& stamp) {
    const Supervisor& supervisor = Supervisor::shared();
    if (const auto engine = supervisor.currentStorageEngine(); engine && !supervisor.isStorageAddressbook()) {
        engine->retrieveRestOfBackupHistory();
    }
    const auto date = StorageLayout::dateOfStamp(stamp);
    if (!date) return nullptr;
    for (const auto& session : CydiaFileManager::shared().backupSessions()) {
        if (session->sessionDate() && StorageLayout::stamp(*session->sessionDate()) == stamp) return session;
    }
    return nullptr;
}

const char* markOf(const CydiaFile& package) {
    if (package.isSuccessfullyInstalled()) return "installed";
    if (package.isAlreadyInstalled()) return "already installed";
    return "failed";
}

// The restore log; answers whether every package went in.
bool printRestoreLog(const CydiaFileManager::Packages& packages, std::ostream& out) {
    bool allIn = true;
    fmt::print(out, "{} package(s) restored\n", packages.size());
    for (const auto& package : packages) {
        const char* mark = markOf(*package);
        allIn = allIn && std::string_view(mark) != "failed";
        fmt::print(out, "  {:<17}  {} ({} {})\n", mark, textutil::orNull(package->name()),
                   textutil::orNull(package->packageName()), textutil::orNull(package->version()));
    }
    return allIn;
}

}  // namespace

int RestoreCommand::run(const Request& request, std::ostream& out, std::ostream& errors) {
    if (!request.confirmed) {
        fmt::print(errors, "stowhaven: a restore starts only when confirmed: add --yes\n");
        return 2;
    }
    gIsBackupMode = false;
    if (!loadCatalogue()) {
        fmt::print(errors, "stowhaven: the {} engine is not available in this build\n",
                   Supervisor::shared().storageEngineName());
        return 1;
    }
    CydiaFileManager& catalogue = CydiaFileManager::shared();
    if (request.session) {
        const auto session = sessionOfStamp(*request.session);
        if (!session) {
            fmt::print(errors, "stowhaven: no session {} on {}\n", *request.session,
                       Supervisor::shared().storageEngineName());
            return 2;
        }
        if (session != catalogue.currentBackupSession()) catalogue.changeCurrentBackupSessionTo(session);
    }
    const auto session = catalogue.currentBackupSession();
    if (!session) {
        fmt::print(errors, "stowhaven: there is no session to restore on {}\n",
                   Supervisor::shared().storageEngineName());
        return 1;
    }
    if (session->isEncrypted()) {
        const auto key = request.keyFile ? keyFromFile(*request.keyFile) : std::nullopt;
        if (!key || !session->isValidEncryptionKey(*key)) {
            fmt::print(errors, "stowhaven: the session is encrypted: add --key-file FILE with its key\n");
            return 2;
        }
    }
    selectRestoreDefaults(*session);
    {
        const ProgressLine progress(errors, Terminal::isStandardErrorATerminal());
        runOperation(std::make_shared<RestoreOperation>());
    }
    const auto restored = catalogue.selectedRestorePackages();
    const bool allIn = printRestoreLog(restored, out);
    if (request.logOf) {
        const auto found = std::find_if(restored.begin(), restored.end(),
                                        [&](const auto& package) { return package->packageName() == request.logOf; });
        if (found == restored.end()) {
            fmt::print(errors, "stowhaven: no install log of {}\n", *request.logOf);
        } else {
            fmt::print(out, "\nInstall log of {}:\n{}\n", *request.logOf, (*found)->installLog().value_or(""));
        }
    }
    return allIn ? 0 : 1;
}

}  // namespace stowhaven
