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
#include "storage/sugarsync/SugarSyncLogin.h"

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
bool useAddressBook(Supervisor& supervisor) {
    if (!ABAddressBookHelper::reopened()->isValid()) {
        if (supervisor.isStorageAddressbook()) supervisor.setStorageToLocal();
        return false;
    }
    supervisor.setStorageToAddressbook();
    return true;
}

}  // namespace

bool useStorageEngine(StorageType type) {
    Supervisor& supervisor = Supervisor::shared();
    if (type == StorageType::Addressbook) {
        const bool used = useAddressBook(supervisor);
        if (used) supervisor.persistStorageType();
        return used;
    }
    const StorageType before = supervisor.currentStorageType();
    supervisor.setCurrentStorageType(type);
    const auto engine = createStorageEngine(type);
    // An engine that can't work (an FTP server without a login, say) gave way as it started.
    if (supervisor.currentStorageType() != type) {
        AlertPresenter::shared()->showAlert(Strings::localized("WARNING"), engine->errorMessage().value_or(""),
                                            {Strings::localized("OK_BUTTON")}, {});
        supervisor.setCurrentStorageType(before);
        return false;
    }
    supervisor.persistStorageType();
    return true;
}

namespace {

// Makes an engine current when it is linked to an account already; otherwise the storage
// before stays current, until a login has been made.
bool tookLinkedEngine(StorageType type) {
    Supervisor& supervisor = Supervisor::shared();
    const StorageType before = supervisor.currentStorageType();
    if (!useStorageEngine(type)) return false;
    auto* engine = dynamic_cast<ConnectionOrientedStorageHelperProtocol*>(StorageEngines::engine(type).get());
    if (engine && engine->isLoggedIn()) return true;
    supervisor.setCurrentStorageType(before);
    supervisor.persistStorageType();
    return false;
}

bool takeCloudEngine(OAuthLogin& login, StorageType type, TerminalPrompt& prompt, std::ostream& out) {
    if (tookLinkedEngine(type)) return true;
    const auto readAnswer = [&prompt] { return prompt.readText(kBrowserLoginQuestion); };
    return logInThroughBrowser(login, std::nullopt, readAnswer, out, out) == BrowserLoginOutcome::LoggedIn;
}

bool takeSugarSync(TerminalPrompt& prompt, std::ostream& out) {
    if (tookLinkedEngine(StorageType::SugarSync)) return true;
    const auto user = prompt.readText("SugarSync login: ");
    const auto password = user ? prompt.readText("Password: ", true) : std::nullopt;
    if (!password) return false;
    SugarSyncLogin login;
    if (const auto error = login.logIn(*user, *password)) {
        fmt::print(out, "{}\n", *error);
        return false;
    }
    fmt::print(out, "Logged in as {}.\n", login.accountName());
    return true;
}

}  // namespace

bool takeEngine(StorageType type, TerminalPrompt& prompt, std::ostream& out) {
    if (const ServerEngine* server = serverEngineOfType(type)) return chooseServerHost(*server, prompt, out);
    if (type == StorageType::SugarSync) return takeSugarSync(prompt, out);
    if (const auto login = makeOAuthLogin(type)) return takeCloudEngine(*login, type, prompt, out);
    return useStorageEngine(type);
}

bool chooseStorageEngine(TerminalPrompt& prompt, std::ostream& out) {
    std::vector<std::string> names;
    for (const EngineName& engine : kEngineNames) names.emplace_back(engine.name);
    const auto chosen = prompt.choose("Storage engine", names);
    if (!chosen) return false;
    const bool taken = takeEngine(kEngineNames[*chosen].type, prompt, out);
    if (taken) fmt::print(out, "Storage is now {}.\n", Supervisor::shared().storageEngineName());
    return taken;
}

}  // namespace stowhaven
