#include "flows/AvailableDeviceBackupController.h"

#include "core/AddressBookNote.h"
#include "core/SessionHistory.h"
#include "core/Supervisor.h"
#include "flows/HistoryWork.h"
#include "platform/AsciiCase.h"
#include "platform/Log.h"
#include "platform/Strings.h"
#include "platform/dispatch/NotificationCenter.h"
#include "storage/StorageLayout.h"
#include "storage/addressbook/ABAddressBookHelper.h"

#include <algorithm>

namespace stowhaven {

namespace {

using Self = AvailableDeviceBackupController;
using Book = ABAddressBookHelper;

constexpr std::string_view kHistoryFileSuffix = ".stowhvn";

bool onAddressBook() { return Supervisor::shared().isStorageAddressbook(); }

// Local storage keeps one device's sessions and no device folders.
bool hasDeviceFolders() { return !onAddressBook() && !Supervisor::shared().isStorageLocal(); }

std::vector<std::string> listedDeviceBackups() {
    if (onAddressBook()) {
        const auto book = Book::shared();
        return book ? book->availableDeviceBackups() : std::vector<std::string>{};
    }
    const auto engine = Supervisor::shared().currentStorageEngine();
    return engine && hasDeviceFolders() ? engine->availableDeviceBackups() : std::vector<std::string>{};
}

Alert report(int tag, const std::string& titleKey, std::string message) {
    return {tag, Strings::localized(titleKey), std::move(message), {Strings::localized("OK_BUTTON")}};
}

void present(const Alert& alert, AlertPresenter::Answered onAnswer = {}) {
    AlertPresenter::shared()->present(alert, std::move(onAnswer));
}

}  // namespace

std::shared_ptr<Self> Self::create(std::shared_ptr<HistoryScreen> screen) {
    return std::shared_ptr<Self>(new Self(std::move(screen)));
}

std::string Self::thisDeviceBackupName() {
    const Supervisor& supervisor = Supervisor::shared();
    return onAddressBook() ? Book::firstNameOfDevice(supervisor.deviceUID()) : supervisor.deviceName();
}

// A record is this device's by the device's identifier at the end of its first name.
bool Self::isThisDevice(const std::string& name) const {
    if (name.empty()) return false;
    if (!onAddressBook()) return name == thisDeviceBackupName();
    const std::string& uid = Supervisor::shared().deviceUID();
    return !uid.empty() && name.size() >= uid.size() &&
           equalsIgnoringAsciiCase(std::string_view(name).substr(name.size() - uid.size()), uid);
}

void Self::viewDidAppear() {
    if (onAddressBook()) {
        if (const auto book = Book::shared()) book->loadAvailableDeviceBackups();
        handleAvailableDeviceBackupsSucceeded();
        return;
    }
    const auto engine = Supervisor::shared().currentStorageEngine();
    if (!engine || !hasDeviceFolders() || !engine->availableDeviceBackups().empty()) {
        handleAvailableDeviceBackupsSucceeded();
        return;
    }
    reloadAvailableDeviceBackups();
}

void Self::reloadAvailableDeviceBackups() {
    const auto engine = Supervisor::shared().currentStorageEngine();
    if (!engine) return;
    waiting_.start(Strings::localized("SEARCH_FOR_ALL_DEVICES_BACKUP"));
    const auto weak = weak_from_this();
    engine->setSuccessSelector(
        history::successOnMain(weak,
                               [](Self& self, const HookObject&) { self.handleAvailableDeviceBackupsSucceeded(); }),
        history::failureOnMain(weak, [](Self& self) { self.handleAvailableDeviceBackupsFailed(); }));
    history::callInBackground([engine] { engine->loadAvailableDeviceBackups(); },
                              [weak] {
                                  if (const auto self = weak.lock()) self->waiting_.end();
                              });
}

void Self::handleAvailableDeviceBackupsSucceeded() {
    deviceBackups_ = listedDeviceBackups();
    if (deviceBackups_.empty()) {
        selectedDeviceBackup_.clear();
        backupDates_.clear();
        screen_->showRows({}, std::nullopt);
        present({kNoDeviceBackup,
                 Strings::localized("NO_DEVICE_BACKUP_TITLE"),
                 Strings::localized("NO_DEVICE_BACKUP_MESSAGE"),
                 {Strings::localized("OK_BUTTON")}},
                [weak = weak_from_this()](const AlertAnswer&) {
                    if (const auto self = weak.lock()) self->viewWillDisappear();
                });
        return;
    }
    const auto own = std::find_if(deviceBackups_.begin(), deviceBackups_.end(),
                                  [this](const std::string& name) { return isThisDevice(name); });
    selectedDeviceBackup_ = own != deviceBackups_.end() ? *own : deviceBackups_.front();
    showSelection();
    loadDetailBackupForDeviceId(selectedDeviceBackup_);
}

void Self::handleAvailableDeviceBackupsFailed() {
    if (const auto engine = Supervisor::shared().currentStorageEngine()) {
        lastError_ = engine->errorMessage().value_or("the storage refused the request");
        SH_LOG("Device backups: {}", *lastError_);
    }
}

void Self::showSelection() {
    const auto found = std::find(deviceBackups_.begin(), deviceBackups_.end(), selectedDeviceBackup_);
    screen_->showRows(deviceBackups_, found == deviceBackups_.end()
                                          ? std::nullopt
                                          : std::optional<std::size_t>(found - deviceBackups_.begin()));
}

bool Self::selectDeviceBackup(const std::string& name) {
    if (std::find(deviceBackups_.begin(), deviceBackups_.end(), name) == deviceBackups_.end()) return false;
    selectedDeviceBackup_ = name;
    showSelection();
    loadDetailBackupForDeviceId(name);
    return true;
}

void Self::loadDetailBackupForDeviceId(const std::string& name) {
    if (name.empty()) return;
    if (!hasDeviceFolders()) {
        const auto book = Book::shared();
        handleDetailLoaded(onAddressBook() && book ? HookObject(book->availableDeviceBackups()) : HookObject());
        return;
    }
    const auto engine = Supervisor::shared().currentStorageEngine();
    if (!engine) return;
    // A failed load only takes the banner down.
    waiting_.start(Strings::localized("LOADING_DEVICE_BACKUP_DETAILS"));
    const auto weak = weak_from_this();
    engine->setSuccessSelector(
        history::successOnMain(weak, [](Self& self, const HookObject& object) { self.handleDetailLoaded(object); }),
        nullptr);
    history::callInBackground([engine, name] { engine->loadBackupDetailsForDevice(name); },
                              [weak] {
                                  if (const auto self = weak.lock()) self->waiting_.end();
                              });
}

// A file engine lists the device's history files, named by their stamps; the address book's
// dates are those of the sessions in the record's note.
void Self::handleDetailLoaded(const HookObject& object) {
    const auto* names = std::get_if<std::vector<std::string>>(&object);
    if (names == nullptr) {
        SH_LOG("Invalid parameter type: {} {}", "HookObject", object.index());
        return;
    }
    backupDates_.clear();
    if (onAddressBook()) {
        const auto book = Book::shared();
        const auto note = book ? book->getNoteForABRecordWithFirstName(selectedDeviceBackup_) : std::nullopt;
        if (note) {
            for (const auto& session : SessionHistory::fromNote(*note)) {
                if (session->sessionDate()) backupDates_.push_back(history::viewDate(*session->sessionDate()));
            }
        }
    } else if (hasDeviceFolders()) {
        for (const std::string& name : *names) {
            if (!name.ends_with(kHistoryFileSuffix)) continue;
            const auto date =
                StorageLayout::dateOfStamp(std::string_view(name).substr(0, name.size() - kHistoryFileSuffix.size()));
            if (date) backupDates_.push_back(history::viewDate(*date));
        }
    }
    std::reverse(backupDates_.begin(), backupDates_.end());
    if (isSelectionThisDevice()) fCurrentDeviceHasBackupSessions_ = !backupDates_.empty();
    screen_->showDetails(backupDates_);
}

void Self::askToRename() {
    if (selectedDeviceBackup_.empty()) return;
    Alert question{kRename,
                   Strings::localized("RENAME_CONFIRMATION_TITLE"),
                   Strings::localized("RENAME_DEVICE_BACKUP_CONFIRMATION_MESSAGE"),
                   {Strings::localized("CANCEL_BUTTON"), Strings::localized("OK_BUTTON")}};
    question.field = Alert::Field::Text;
    present(question, [weak = weak_from_this()](const AlertAnswer& answer) {
        const auto self = weak.lock();
        if (self && answer.buttonIndex == 1 && answer.fieldText) self->rename(*answer.fieldText);
    });
}

// Names compare without regard to case, as the address book and most servers take them.
void Self::rename(const std::string& newName) {
    const std::string oldName = selectedDeviceBackup_;
    if (oldName.empty() || newName.empty()) return;
    if (equalsIgnoringAsciiCase(newName, oldName)) {
        present(report(kDuplicateName, "DUPLICATE_NAME_TITLE", Strings::localized("DUPLICATE_NAME_MESSAGE")));
        return;
    }
    // Another device's backup would be merged or overwritten.
    if (std::any_of(deviceBackups_.begin(), deviceBackups_.end(),
                    [&newName](const std::string& name) { return equalsIgnoringAsciiCase(name, newName); })) {
        present(report(kDuplicateName, "DUPLICATE_NAME_TITLE", Strings::localized("DEVICE_BACKUP_NAME_TAKEN")));
        return;
    }
    fNeedReload_ = fNeedReload_ || isThisDevice(oldName) || isThisDevice(newName);
    if (onAddressBook()) {
        if (const auto book = Book::shared()) book->renameEntryWithFirstName(oldName, newName);
        handleAvailableDeviceBackupsSucceeded();
        return;
    }
    callWithListHooks(Strings::localized("RENAMING_DEVICE_BACKUP"),
                      [oldName, newName](StorageHelperProtocol& engine) { engine.moveFromPath(oldName, newName); });
}

void Self::askToDelete() {
    if (selectedDeviceBackup_.empty()) return;
    present({kDeleteDeviceBackup,
             Strings::localized("DELETE_CONFIRMATION_TITLE"),
             Strings::localized("DELETE_DEVICE_BACKUP_CONFIRMATION_MESSAGE"),
             {Strings::localized("NO_BUTTON"), Strings::localized("YES_BUTTON")}},
            [weak = weak_from_this()](const AlertAnswer& answer) {
                if (const auto self = weak.lock(); self && answer.buttonIndex == 1) self->deleteSelectedDeviceBackup();
            });
}

void Self::deleteSelectedDeviceBackup() {
    const std::string name = selectedDeviceBackup_;
    if (name.empty()) return;
    fNeedReload_ = fNeedReload_ || isSelectionThisDevice();
    if (onAddressBook()) {
        if (const auto book = Book::shared()) book->deleteEntryWithFirstName(name);
        handleAvailableDeviceBackupsSucceeded();
        return;
    }
    callWithListHooks(Strings::localized("DELETING_DEVICE_BACKUP"),
                      [name](StorageHelperProtocol& engine) { engine.deleteBackupForDeviceId(name); });
}

void Self::callWithListHooks(const std::string& indicator, std::function<void(StorageHelperProtocol&)> call) {
    const auto engine = Supervisor::shared().currentStorageEngine();
    if (!engine || !hasDeviceFolders()) return;
    waiting_.start(indicator);
    const auto weak = weak_from_this();
    engine->setSuccessSelector(
        history::successOnMain(weak, [](Self& self, const HookObject&) { self.reloadAvailableDeviceBackups(); }),
        history::failureOnMain(weak, [](Self& self) { self.handleAvailableDeviceBackupsFailed(); }));
    history::callInBackground([engine, call = std::move(call)] { call(*engine); },
                              [weak] {
                                  if (const auto self = weak.lock()) self->waiting_.end();
                              });
}

// Only Dropbox and the address book can copy a device's backup to another name.
bool Self::refusesTakeOverOf(const std::string& name) {
    const Supervisor& supervisor = Supervisor::shared();
    if (supervisor.isStorageAddressbook() || supervisor.isStorageDropbox() || isThisDevice(name)) return false;
    present(report(kOperationUnavailable, "OPERATION_UNAVAILABLE_TITLE",
                   Strings::format("OPERATION_UNAVAILABLE_MESSAGE", supervisor.deviceName())));
    return true;
}

void Self::askToUseSelectedDeviceBackup() {
    if (selectedDeviceBackup_.empty()) return;
    present({kUseDeviceBackup,
             Strings::localized("OTHER_DEVICE_BACKUP"),
             Strings::localized("USE_OTHER_DEVICE_BACKUP_MESSAGE"),
             {Strings::localized("NO_BUTTON"), Strings::localized("YES_BUTTON")}},
            [weak = weak_from_this()](const AlertAnswer& answer) {
                if (const auto self = weak.lock(); self && answer.buttonIndex == 1) self->useSelectedDeviceBackup();
            });
}

void Self::useSelectedDeviceBackup() {
    const std::string name = selectedDeviceBackup_;
    if (name.empty() || refusesTakeOverOf(name) || isThisDevice(name)) return;
    const bool thisDeviceListed = std::any_of(deviceBackups_.begin(), deviceBackups_.end(),
                                              [this](const std::string& entry) { return isThisDevice(entry); });
    if (thisDeviceListed && fCurrentDeviceHasBackupSessions_) {
        present(report(kDeviceBackupAlreadyExists, "INFORMATION_TITLE",
                       Strings::localized("DEVICE_BACKUP_ALREADY_EXISTS")));
        return;
    }
    fNeedReload_ = true;
    hasTakenOver_ = true;
    if (onAddressBook()) {
        copyAddressBookRecord();
        if (const auto book = Book::shared()) book->loadAvailableDeviceBackups();
        handleAvailableDeviceBackupsSucceeded();
    } else if (const auto engine = Supervisor::shared().currentStorageEngine();
               auto* copier = answersTo<StorageCopying>(engine)) {
        waiting_.start(Strings::localized("COPYING_DEVICE_BACKUP"));
        const auto weak = weak_from_this();
        engine->setSuccessSelector(
            history::successOnMain(weak, [](Self& self, const HookObject&) { self.viewWillDisappear(); }),
            history::failureOnMain(weak, [](Self& self) { self.handleAvailableDeviceBackupsFailed(); }));
        const std::string target = thisDeviceBackupName();
        history::callInBackground([engine, copier, name, target] { copier->copyFromPath(name, target); },
                                  [weak] {
                                      if (const auto self = weak.lock()) self->waiting_.end();
                                  });
    } else {
        SH_LOG("The engine can't copy <{}>", name);
    }
    fCurrentDeviceHasBackupSessions_ = !backupDates_.empty();
}

// A record of this device's own, as a first backup makes it, with the chosen record's note.
void Self::copyAddressBookRecord() {
    const auto book = Book::shared();
    if (!book) return;
    const auto note = book->getNoteForABRecordWithFirstName(selectedDeviceBackup_);
    // The owner's contacts that the listing shows beside the records hold no backups.
    if (!note || note->empty()) {
        lastError_ = "<" + selectedDeviceBackup_ + "> holds no backups to copy";
        return;
    }
    bool saved = true;
    // An empty record of this device takes the note, rather than a second record beside it.
    if (!book->existsABRecordWithFirstName(thisDeviceBackupName(), Book::kLastName)) {
        saved = book->createDeviceRecord(thisDeviceBackupName(), Supervisor::shared().deviceName());
    }
    saved = book->updateABRecordNoteData(note) && saved;
    saved = book->saveABRecordChange() && saved;
    if (saved) {
        SH_LOG("All data saved into addressbook!");
    } else {
        SH_LOG("Failed to save into addressbook!");
        lastError_ = "the address book didn't take the new record";
    }
}

// This device's backups changed: the main screen reads them again.
void Self::viewWillDisappear() {
    if (closed_) return;
    closed_ = true;
    if (fNeedReload_) NotificationCenter::defaultCenter().post("RELOAD_DATA_NOW");
    screen_->close();
}

}  // namespace stowhaven
