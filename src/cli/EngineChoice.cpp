#include "cli/EngineChoice.h"

#include "cli/TerminalPrompt.h"
#include "core/Supervisor.h"
#include "storage/StorageEngineFactory.h"
#include "storage/addressbook/ABAddressBookHelper.h"

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

namespace {

// The address book is no engine of the storage contract: its helper opens the book, and
// without access the storage can't stay on it.
EngineUse useAddressBook(Supervisor& supervisor) {
    auto helper = ABAddressBookHelper::shared();
    if (helper) {
        helper->reset();
    } else {
        helper = ABAddressBookHelper::createABAddressBookHelper();
    }
    if (!helper->isValid()) {
        if (supervisor.isStorageAddressbook()) supervisor.setStorageToLocal();
        return EngineUse::Refused;
    }
    supervisor.setStorageToAddressbook();
    return EngineUse::Current;
}

}  // namespace

EngineUse useStorageEngine(StorageType type) {
    Supervisor& supervisor = Supervisor::shared();
    if (type == StorageType::Addressbook) {
        const EngineUse use = useAddressBook(supervisor);
        if (use == EngineUse::Current) supervisor.persistStorageType();
        return use;
    }
    const StorageType before = supervisor.currentStorageType();
    supervisor.setCurrentStorageType(type);
    if (!createStorageEngine(type)) {
        supervisor.setCurrentStorageType(before);
        return EngineUse::NotBuilt;
    }
    supervisor.persistStorageType();
    return EngineUse::Current;
}

bool chooseStorageEngine(TerminalPrompt& prompt, std::ostream& out) {
    std::vector<std::string> names;
    for (const EngineName& engine : kEngineNames) names.emplace_back(engine.name);
    const auto chosen = prompt.choose("Storage engine", names);
    if (!chosen) return false;
    switch (useStorageEngine(kEngineNames[*chosen].type)) {
        case EngineUse::Current:
            break;
        case EngineUse::NotBuilt:
            fmt::print(out, "The {} engine is not available in this build.\n", names[*chosen]);
            return false;
        case EngineUse::Refused:
            return false;
    }
    fmt::print(out, "Storage is now {}.\n", Supervisor::shared().storageEngineName());
    return true;
}

}  // namespace stowhaven
