#include "cli/EngineChoice.h"

#include "cli/BrowserLogin.h"
#include "cli/ServerHostChoice.h"
#include "cli/TerminalPrompt.h"
#include "core/AlertPresenter.h"
#include "core/Supervisor.h"
#include "platform/Strings.h"
#include "storage/OAuthLogin.h"
#include "storage/StorageEngineFactory.h"
#include "storage/StorageEngines.h"
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
    if (!ABAddressBookHelper::reopened()->isValid()) {
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
    const auto engine = createStorageEngine(type);
    if (!engine) {
        supervisor.setCurrentStorageType(before);
        return EngineUse::NotBuilt;
    }
    // An engine that can't work (an FTP server without a login, say) gave way as it started.
    if (supervisor.currentStorageType() != type) {
        AlertPresenter::shared()->showAlert(Strings::localized("WARNING"), engine->errorMessage().value_or(""),
                                            {Strings::localized("OK_BUTTON")}, {});
        supervisor.setCurrentStorageType(before);
        return EngineUse::Refused;
    }
    supervisor.persistStorageType();
    return EngineUse::Current;
}

namespace {

bool tookEngine(StorageType type, const std::string& name, std::ostream& out) {
    switch (useStorageEngine(type)) {
        case EngineUse::Current:
            return true;
        case EngineUse::NotBuilt:
            fmt::print(out, "The {} engine is not available in this build.\n", name);
            return false;
        case EngineUse::Refused:
            return false;
    }
    return false;
}

}  // namespace

bool takeCloudEngine(StorageType type, TerminalPrompt& prompt, std::ostream& out) {
    const auto login = makeOAuthLogin(type);
    if (!login) return false;
    Supervisor& supervisor = Supervisor::shared();
    const StorageType before = supervisor.currentStorageType();
    if (useStorageEngine(type) == EngineUse::Current) {
        auto* engine = dynamic_cast<ConnectionOrientedStorageHelperProtocol*>(StorageEngines::engine(type).get());
        if (engine && engine->isLoggedIn()) return true;
        // Not current until the login has been made.
        supervisor.setCurrentStorageType(before);
        supervisor.persistStorageType();
    }
    const auto readAnswer = [&prompt] { return prompt.readText(kBrowserLoginQuestion); };
    return logInThroughBrowser(*login, std::nullopt, readAnswer, out, out) == BrowserLoginOutcome::LoggedIn;
}

bool chooseStorageEngine(TerminalPrompt& prompt, std::ostream& out) {
    std::vector<std::string> names;
    for (const EngineName& engine : kEngineNames) names.emplace_back(engine.name);
    const auto chosen = prompt.choose("Storage engine", names);
    if (!chosen) return false;
    const StorageType type = kEngineNames[*chosen].type;
    const ServerEngine* server = serverEngineOfType(type);
    bool taken = false;
    if (server) {
        taken = chooseServerHost(*server, prompt, out);
    } else if (makeOAuthLogin(type)) {
        taken = takeCloudEngine(type, prompt, out);
    } else {
        taken = tookEngine(type, names[*chosen], out);
    }
    if (taken) fmt::print(out, "Storage is now {}.\n", Supervisor::shared().storageEngineName());
    return taken;
}

}  // namespace stowhaven
