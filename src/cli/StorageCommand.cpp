#include "cli/StorageCommand.h"

#include "cli/CatalogueLoad.h"
#include "cli/EngineChoice.h"
#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "storage/addressbook/ABAddressBookHelper.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <fmt/ranges.h>

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
        fmt::print(errors, "stowhaven: the {} engine can't be used here; storage stays {}\n", name,
                   Supervisor::shared().storageEngineName());
        return 1;
    }
    // An engine that can't work falls back to another as it starts; the user learns which.
    const Supervisor& supervisor = Supervisor::shared();
    fmt::print(out, "Storage is now {} (type {}).\n", supervisor.storageEngineName(),
               static_cast<std::int64_t>(supervisor.currentStorageType()));
    return 0;
}

void printBackupsKept(const Supervisor& supervisor, std::ostream& out) {
    const std::int32_t kept = supervisor.maximumBackupsToKeep();
    fmt::print(out, "Backups kept: {}\n", kept == 0 ? std::string("all") : std::to_string(kept));
}

// The address book keeps one record per device, named by its first name.
int showAddressBook(const Supervisor& supervisor, std::ostream& out, std::ostream& errors) {
    const auto book = ABAddressBookHelper::createABAddressBookHelper();
    if (!book->isValid()) {
        fmt::print(errors, "stowhaven: no access to the contacts\n");
        return 1;
    }
    book->loadAvailableDeviceBackups();
    const auto devices = book->availableDeviceBackups();
    fmt::print(out, "Device records: {}\n", devices.empty() ? "none" : fmt::format("{}", fmt::join(devices, ", ")));
    printBackupsKept(supervisor, out);
    return 0;
}

void printStorage(const Supervisor& supervisor, std::ostream& out) {
    fmt::print(out, "Storage: {} (type {})\nEngines in this build: {}\n", supervisor.storageEngineName(),
               static_cast<std::int64_t>(supervisor.currentStorageType()), storageEngineNames());
}

// The engine that a job would work with: one that can't start has given way to local storage.
int show(std::ostream& out, std::ostream& errors) {
    Supervisor& supervisor = Supervisor::shared();
    if (supervisor.isStorageAddressbook()) {
        printStorage(supervisor, out);
        return showAddressBook(supervisor, out, errors);
    }
    startStorageEngine();
    printStorage(supervisor, out);
    const auto engine = supervisor.currentStorageEngine();
    engine->refreshFreeSpace();
    fmt::print(out, "Free space: {:.3f} Mb\n", engine->freeSpace());
    if (supervisor.isStorageLocal()) fmt::print(out, "Folder: {}\n", localStoragePath());
    printBackupsKept(supervisor, out);
    if (const auto error = engine->errorMessage()) fmt::print(out, "Last error: {}\n", *error);
    return 0;
}

}  // namespace

int StorageCommand::run(const std::optional<std::string>& engine, std::ostream& out, std::ostream& errors) {
    return engine ? use(*engine, out, errors) : show(out, errors);
}

}  // namespace stowhaven
