#include "cli/EngineChoice.h"

#include "cli/TerminalPrompt.h"
#include "core/Supervisor.h"
#include "storage/StorageEngineFactory.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <array>
#include <vector>

namespace stowhaven {

namespace {

struct EngineName {
    const char* name;
    StorageType type;
};

// In type order.
constexpr std::array<EngineName, 9> kEngineNames = {{{"addressbook", StorageType::Addressbook},
                                                     {"dropbox", StorageType::Dropbox},
                                                     {"sugarsync", StorageType::SugarSync},
                                                     {"onedrive", StorageType::SkyDrive},
                                                     {"box", StorageType::Box},
                                                     {"local", StorageType::Local},
                                                     {"ftp", StorageType::FTP},
                                                     {"gdrive", StorageType::GDrive},
                                                     {"owncloud", StorageType::OwnCloud}}};

}  // namespace

std::optional<StorageType> storageTypeNamed(const std::string& name) {
    for (const EngineName& engine : kEngineNames) {
        if (name == engine.name) return engine.type;
    }
    return std::nullopt;
}

std::string storageEngineNames() {
    std::string names;
    for (const EngineName& engine : kEngineNames) names += (names.empty() ? "" : ", ") + std::string(engine.name);
    return names;
}

bool useStorageEngine(StorageType type) {
    Supervisor& supervisor = Supervisor::shared();
    const StorageType before = supervisor.currentStorageType();
    supervisor.setCurrentStorageType(type);
    // The address book is no engine of the storage contract: it needs none made.
    if (type != StorageType::Addressbook && !createStorageEngine(type)) {
        supervisor.setCurrentStorageType(before);
        return false;
    }
    supervisor.persistStorageType();
    return true;
}

bool chooseStorageEngine(TerminalPrompt& prompt, std::ostream& out) {
    std::vector<std::string> names;
    for (const EngineName& engine : kEngineNames) names.emplace_back(engine.name);
    const auto chosen = prompt.choose("Storage engine", names);
    if (!chosen) return false;
    if (!useStorageEngine(kEngineNames[*chosen].type)) {
        fmt::print(out, "The {} engine is not available in this build.\n", names[*chosen]);
        return false;
    }
    fmt::print(out, "Storage is now {}.\n", Supervisor::shared().storageEngineName());
    return true;
}

}  // namespace stowhaven
