#include "cli/StorageCommand.h"

#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "storage/StorageEngineFactory.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <array>

namespace stowhaven {

namespace {

struct EngineName {
    const char* name;
    StorageType type;
};

// The engines by the short names the command takes, in type order.
constexpr std::array<EngineName, 9> kEngineNames = {{{"addressbook", StorageType::Addressbook},
                                                     {"dropbox", StorageType::Dropbox},
                                                     {"sugarsync", StorageType::SugarSync},
                                                     {"onedrive", StorageType::SkyDrive},
                                                     {"box", StorageType::Box},
                                                     {"local", StorageType::Local},
                                                     {"ftp", StorageType::FTP},
                                                     {"gdrive", StorageType::GDrive},
                                                     {"owncloud", StorageType::OwnCloud}}};

std::optional<StorageType> typeNamed(const std::string& name) {
    for (const EngineName& engine : kEngineNames) {
        if (name == engine.name) return engine.type;
    }
    return std::nullopt;
}

std::string knownNames() {
    std::string names;
    for (const EngineName& engine : kEngineNames) names += (names.empty() ? "" : ", ") + std::string(engine.name);
    return names;
}

int use(const std::string& name, std::ostream& out, std::ostream& errors) {
    const auto type = typeNamed(name);
    if (!type) {
        fmt::print(errors, "stowhaven: no storage engine is named <{}>; the engines are {}\n", name, knownNames());
        return 2;
    }
    Supervisor& supervisor = Supervisor::shared();
    const StorageType before = supervisor.currentStorageType();
    supervisor.setCurrentStorageType(*type);
    if (!createStorageEngine(*type)) {
        supervisor.setCurrentStorageType(before);
        fmt::print(errors, "stowhaven: the {} engine is not available in this build\n", name);
        return 2;
    }
    // An engine that can't work falls back to another as it starts; the user learns which.
    supervisor.persistStorageType();
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
