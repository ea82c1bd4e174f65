#include "cli/StorageCommand.h"

#include "cli/EngineChoice.h"
#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "storage/StorageEngineFactory.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

namespace stowhaven {

namespace {

int use(const std::string& name, std::ostream& out, std::ostream& errors) {
    const auto type = storageTypeNamed(name);
    if (!type) {
        fmt::print(errors, "stowhaven: no storage engine is named <{}>; the engines are {}\n", name,
                   storageEngineNames());
        return 2;
    }
    if (!useStorageEngine(*type)) {
        fmt::print(errors, "stowhaven: the {} engine is not available in this build\n", name);
        return 2;
    }
    // An engine that can't work falls back to another as it starts; the user learns which.
    const Supervisor& supervisor = Supervisor::shared();
    fmt::print(out, "Storage is now {} (type {}).\n", supervisor.storageEngineName(),
               static_cast<std::int64_t>(supervisor.currentStorageType()));
    return 0;
}

int show(std::ostream& out, std::ostream& errors) {
    Supervisor& supervisor = Supervisor::shared();
    const auto engine = createStorageEngine(supervisor.currentStorageType());
    fmt::print(out, "Storage: {} (type {})\n", supervisor.storageEngineName(),
               static_cast<std::int64_t>(supervisor.currentStorageType()));
    if (!engine) {
        fmt::print(errors, "stowhaven: this engine is not available in this build\n");
        return 1;
    }
    engine->refreshFreeSpace();
    fmt::print(out, "Free space: {:.3f} Mb\n", engine->freeSpace());
    if (supervisor.isStorageLocal()) fmt::print(out, "Folder: {}\n", localStoragePath());
    const std::int32_t kept = supervisor.maximumBackupsToKeep();
    fmt::print(out, "Backups kept: {}\n", kept == 0 ? std::string("all") : std::to_string(kept));
    if (const auto error = engine->errorMessage()) fmt::print(out, "Last error: {}\n", *error);
    return 0;
}

}  // namespace

int StorageCommand::run(const std::optional<std::string>& engine, std::ostream& out, std::ostream& errors) {
    return engine ? use(*engine, out, errors) : show(out, errors);
}

}  // namespace stowhaven
