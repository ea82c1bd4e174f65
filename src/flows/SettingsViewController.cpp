#include "flows/SettingsViewController.h"

#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/Log.h"
#include "platform/Strings.h"
#include "platform/dispatch/NotificationCenter.h"
#include "storage/ServerLogin.h"
#include "storage/StorageEngineFactory.h"
#include "storage/StorageEngines.h"
#include "storage/addressbook/ABAddressBookHelper.h"
#include "storage/local/LocalStorageHelper.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <limits>

namespace stowhaven {

namespace {

constexpr const char* kLogoutTitleKey = "CLOUD_LOGOUT_TITLE";

ConnectionOrientedStorageHelperProtocol* connectionOf(const std::shared_ptr<StorageHelperProtocol>& engine) {
    return dynamic_cast<ConnectionOrientedStorageHelperProtocol*>(engine.get());
}

bool isLoggedIn(StorageType type) {
    if (type == StorageType::Local || type == StorageType::Addressbook) return true;
    auto* connection = connectionOf(StorageEngines::engine(type));
    return connection != nullptr && connection->isLoggedIn();
}

// The engine of the type, made by its factory when there is none yet.
std::shared_ptr<StorageHelperProtocol> engineOf(StorageType type) {
    if (auto engine = StorageEngines::engine(type)) return engine;
    return createStorageEngine(type);
}

// A count is a non-empty run of decimal digits that fits the count's 32 bits.
std::optional<std::int32_t> countOf(const std::string& text) {
    if (text.empty() || !std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; })) {
        return std::nullopt;
    }
    std::int32_t count = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return count;
}

void postReloadDataNeeded() { NotificationCenter::defaultCenter().post("RELOAD_DATA_NEEDED"); }

}  // namespace

std::shared_ptr<SettingsViewController> SettingsViewController::create() {
    return std::shared_ptr<SettingsViewController>(new SettingsViewController());
}

SettingsViewController::SettingsViewController() : typeAtOpening_(Supervisor::shared().currentStorageType()) {}

std::vector<SettingsViewController::EngineRowState> SettingsViewController::engineRows() const {
    const StorageType current = Supervisor::shared().currentStorageType();
    std::vector<EngineRowState> rows;
    for (const EngineRow& row : stowhaven::engineRows()) {
        rows.push_back({&row, row.type == current && isLoggedIn(row.type)});
    }
    return rows;
}

SettingsViewController::TapResult SettingsViewController::tapEngineRow(std::size_t index) {
    const auto rows = stowhaven::engineRows();
    if (index >= rows.size()) return TapResult::Done;
    const EngineRow& row = rows[index];
    switch (row.type) {
        case StorageType::Local:
            return tapLocalStorage();
        case StorageType::Addressbook:
            return tapAddressBook();
        default:
            return tapServerEngine(row);
    }
}

SettingsViewController::TapResult SettingsViewController::tapServerEngine(const EngineRow& row) {
    Supervisor& supervisor = Supervisor::shared();
    auto* connection = connectionOf(engineOf(row.type));
    const bool loggedIn = connection != nullptr && connection->isLoggedIn();
    const bool current = supervisor.currentStorageType() == row.type;
    if (loggedIn && current) {
        ask(kLogoutTitleKey, Strings::format("CLOUD_LOGOUT_MESSAGE", row.title), {"NO_BUTTON", "YES_BUTTON"});
        return TapResult::Asked;
    }
    if (current || loggedIn) {
        supervisor.setStorageTo(row.type);
        return TapResult::Done;
    }
    return TapResult::LoginNeeded;
}

SettingsViewController::TapResult SettingsViewController::tapLocalStorage() {
    Supervisor& supervisor = Supervisor::shared();
    if (supervisor.isStorageLocal()) {
        ask("LOCAL_STORAGE_ERASE_TITLE", Strings::localized("LOCAL_STORAGE_ERASE_MESSAGE"),
            {"NO_BUTTON", "YES_BUTTON"});
        return TapResult::Asked;
    }
    supervisor.setStorageToLocal();
    engineOf(StorageType::Local);
    return TapResult::Done;
}

// Without access to the contacts the address book can't stay the storage.
SettingsViewController::TapResult SettingsViewController::tapAddressBook() {
    Supervisor& supervisor = Supervisor::shared();
    if (!ABAddressBookHelper::reopened()->isValid()) {
        if (supervisor.isStorageAddressbook()) supervisor.setStorageToLocal();
        engineOf(supervisor.currentStorageType());
        return TapResult::Refused;
    }
    if (supervisor.isStorageAddressbook()) {
        ask("DELETE_CONFIRMATION_TITLE", Strings::localized("DELETE_ADDRESSBOOK_ENTRY_MESSAGE"),
            {"NO_BUTTON", "YES_BUTTON"});
        return TapResult::Asked;
    }
    supervisor.setStorageToAddressbook();
    return TapResult::Done;
}

std::int32_t SettingsViewController::maximumBackupsToKeep() const {
    return Supervisor::shared().maximumBackupsToKeep();
}

void SettingsViewController::askMaximumBackupsToKeep() {
    ask("NUMBER_KEEP_BACKUP_LABEL", Strings::format("NUMBER_KEEP_BACKUP_MESSAGE", maximumBackupsToKeep()),
        {"CANCEL_BUTTON", "OK_BUTTON"}, Alert::Field::Text);
}

void SettingsViewController::ask(const std::string& titleKey, const std::string& message,
                                 const std::vector<std::string>& buttonKeys, Alert::Field field) {
    Alert alert{.title = Strings::localized(titleKey), .message = message, .buttons = {}, .field = field};
    for (const std::string& key : buttonKeys) alert.buttons.push_back(Strings::localized(key));
    AlertPresenter::shared()->present(alert, [weak = weak_from_this(), title = alert.title](const AlertAnswer& answer) {
        if (const auto self = weak.lock()) self->alertAnswered(title, answer);
    });
}

void SettingsViewController::alertAnswered(const std::string& title, const AlertAnswer& answer) {
    if (answer.buttonIndex == 0) return;
    if (title == Strings::localized("DELETE_CONFIRMATION_TITLE")) {
        deleteAddressBookEntries();
    } else if (title == Strings::localized("LOCAL_STORAGE_ERASE_TITLE")) {
        eraseLocalStorage();
    } else if (title == Strings::localized("NUMBER_KEEP_BACKUP_LABEL")) {
        takeMaximumBackupsToKeep(answer.fieldText);
    } else {
        ServerLogin::logOut(Supervisor::shared().currentStorageType());
    }
}

void SettingsViewController::takeMaximumBackupsToKeep(const std::optional<std::string>& text) {
    const auto count = countOf(textutil::trimmed(text.value_or("")));
    if (!count) {
        Supervisor::showAlert(Strings::localized("WARNING"), Strings::localized("ERROR_MESSAGE_MAX_BACKUP"));
        return;
    }
    Supervisor::shared().setMaximumBackupToKeep(*count);
}

void SettingsViewController::eraseLocalStorage() {
    if (const auto engine = std::dynamic_pointer_cast<LocalStorageHelper>(StorageEngines::engine(StorageType::Local))) {
        engine->eraseAllData();
    }
    dataErased_ = true;
    postReloadDataNeeded();
}

void SettingsViewController::deleteAddressBookEntries() {
    if (const auto helper = ABAddressBookHelper::shared()) helper->deleteAllStowhavenABEntries();
    dataErased_ = true;
    postReloadDataNeeded();
}

void SettingsViewController::saveChanges() {
    Supervisor& supervisor = Supervisor::shared();
    supervisor.persistMaximumBackupsToKeep();
    supervisor.persistStorageType();
    // The screen's hooks hold no more once it is gone.
    if (supervisor.isCloudStorage()) {
        if (const auto engine = supervisor.currentStorageEngine()) engine->setSuccessSelector({}, {});
    }
    postReloadDataNeeded();
}

bool SettingsViewController::storageChanged() const {
    return dataErased_ || Supervisor::shared().currentStorageType() != typeAtOpening_;
}

}  // namespace stowhaven
