// The address book's way of keeping sessions: the whole history of a device in the note of
// its contact record, read at the load and rewritten at every store.

#include "archive/HistoryText.h"
#include "core/AddressBookNote.h"
#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "core/SessionHistory.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Strings.h"
#include "storage/addressbook/AddressBookRecords.h"

namespace stowhaven {

namespace {

constexpr const char* kLastName = "Stow";
// The record of a device before records were made per device.
constexpr const char* kGenericFirstName = "Haven";
constexpr const char* kGroupName = "Stowhaven Data";
constexpr const char* kOrganization = "Larkmoor, Inc.";
// Exchange ActiveSync keeps no longer a note.
constexpr std::size_t kActiveSyncNoteLimit = 8620;

std::string deviceFirstName() { return std::string(kGenericFirstName) + "_" + Supervisor::shared().deviceUID(); }

// The record of this device, made with the program's name, group and links.
bool createDeviceRecord(AddressBookRecords& records) {
    Supervisor& supervisor = Supervisor::shared();
    supervisor.notifyProgress(std::nullopt, Strings::localized("CREATING_ADDRESSBOOK_ENTRY"));
    bool ok = records.createABRecord();
    SH_LOG("\tABRecord: {:d}", ok);
    const auto step = [&ok](const char* what, bool result) {
        SH_LOG("\t{}: {:d}", what, result);
        ok = ok && result;
    };
    step("ABGroup", records.createABGroupWithName(kGroupName));
    step("ABRecordFirstName", records.updateABRecordFirstName(deviceFirstName()));
    step("ABRecordLastName", records.updateABRecordLastName(kLastName));
    step("ABRecordNickName", records.updateABRecordNickName(supervisor.deviceName()));
    step("ABRecordOrganizationName", records.updateABRecordOrganizationName(kOrganization));
    step("ABRecordHomepageURL", records.updateABRecordHomepageURLString(AddressBookNote::kUserGuideURL));
    return ok;
}

}  // namespace

void CydiaFileManager::buildPreviousBackupPackages() {
    const auto records = AddressBookRecords::shared();
    fGenericData_ = false;
    if (!records) {
        SH_LOG("No address book to read");
        fGenericData_ = true;
        return;
    }
    records->upgradeStowhavenABEntry();
    if (!records->existsABRecordWithFirstName(deviceFirstName(), kLastName)) {
        // A generic record is read, and the next store makes this device's own beside it.
        fGenericData_ = records->existsABRecordWithFirstName(kGenericFirstName, kLastName);
        if (!fGenericData_) {
            SH_LOG("No entry found for previous backup");
            fGenericData_ = true;
            return;
        }
    }
    processABData();
}

void CydiaFileManager::processABData() {
    const auto records = AddressBookRecords::shared();
    const auto note = records ? records->getCurrentABRecordNote() : std::nullopt;
    if (!note || note->empty()) {
        SH_LOG("\tEmpty note => Skipping record!");
        return;
    }
    const bool oldFormat = AddressBookNote::isOldFormat(*note);
    SH_LOG("Processing note size: {}", note->size());
    expandNote(*note);
    if (oldFormat) {
        buildRepoSourcesFromOldFormat(records->getCurrentABRecordOrganization().value_or(""));
    } else {
        buildOldRepositorySources();
    }
}

void CydiaFileManager::expandNote(const std::string& note) {
    Sessions sessions = SessionHistory::fromNote(note);
    std::lock_guard managerLock(mutex_);
    setCurrentBackupSession(sessions.empty() ? nullptr : sessions.back());
    backupSessions_.set(std::move(sessions));
}

// "repo.example.org ./, http://apt.example.net/ ./" or the same as "deb " lines.
void CydiaFileManager::buildRepoSourcesFromOldFormat(const std::string& text) {
    const auto session = currentBackupSession();
    if (!session) return;
    const std::string separator = text.find(',') != std::string::npos ? "," : "deb ";
    std::size_t start = 0;
    while (start <= text.size()) {
        const std::size_t end = std::min(text.find(separator, start), text.size());
        std::string piece = textutil::trimmed(std::string_view(text).substr(start, end - start));
        start = end + separator.size();
        if (piece.empty() || piece.starts_with("#")) continue;
        if (!piece.ends_with(" ./")) piece += " ./";
        session->addRepositorySource(std::make_shared<RepositorySource>(PlistValue::Dictionary{
            {"URI", piece}, {"Type", "deb"}, {"Distribution", "./"}, {"Sections", PlistValue::Array{}}}));
    }
}

std::optional<std::string> CydiaFileManager::getABDataFormat() {
    Supervisor::shared().notifyProgress(std::nullopt, Strings::localized("COMPRESSING_DATA"));
    return backupSessions_.with([](const Sessions& sessions) {
        return HistoryText::encode(ArchiveValue::mutableArray(ArchiveValue::arrayOf(sessions)));
    });
}

std::optional<std::string> CydiaFileManager::getABVCardCurrentBackupSessionDataFormat() {
    const auto session = currentBackupSession();
    if (!session) return std::nullopt;
    return HistoryText::encode(ArchiveValue(ArchiveValue::arrayOf(Sessions{session})));
}

// The whole history goes into the note, enciphered as a whole when the newest session is.
// A store that fails takes the new session out of the history again, so that the history
// in memory stays the note's.
void CydiaFileManager::storeBackupDataInAddressbook() {
    Supervisor& supervisor = Supervisor::shared();
    if (supervisor.isCanceled()) return;
    SH_LOG("\tIN addressbook...");
    auto note = getABDataFormat();
    const auto sessions = backupSessions();
    if (note && gEncryptBackupEnabled && !sessions.empty() && sessions.back()->isEncrypted()) {
        const std::string path = supervisor.getTemporaryFileName(false);
        std::string error;
        if (!FileManager::writeFile(path, *note, &error)) {
            SH_LOG("Couldn't write to <{}>. Error: {}", path, error);
            return;
        }
        encryptFileAtPath(path);
        note = FileManager::contentsOfFile(path, &error);
        if (!note) SH_LOG("Error while encrypted data: {}!", error);
    }
    setErrorMsg(std::nullopt);
    const auto records = AddressBookRecords::shared();
    if (!note || !records) {
        SH_LOG("Data failed to be saved into addressbook! Error: {}", note ? "no address book" : "no note");
        setErrorMsg("");
        removeLastBackupSession();
        return;
    }
    if (note->size() > kActiveSyncNoteLimit && records->isActiveSyncEnabled()) {
        setErrorMsg(Strings::format("ACTIVE_SYNC_LIMIT", note->size()));
        SH_LOG("Data failed to be saved into addressbook! Error: {}", errorMsg().value_or(""));
        removeLastBackupSession();
        return;
    }
    bool ok = !fGenericData_ || createDeviceRecord(*records);
    supervisor.notifyProgress(std::nullopt, Strings::localized("UPDATING_ADDRESSBOOK_ENTRY"));
    ok = records->updateABRecordNoteData(*note) && ok;
    if (supervisor.isCanceled()) return;
    ok = records->saveABRecordChange() && ok;
    fSaveDataOk_ = ok;
    supervisor.logMemoryUsage();
    supervisor.removeTemporaryFolders();
    supervisor.removeTemporaryFiles();
    if (ok) {
        fGenericData_ = false;
        SH_LOG("All data saved into addressbook!");
        return;
    }
    setErrorMsg("");
    SH_LOG("Data failed to be saved into addressbook!");
    removeLastBackupSession();
}

void CydiaFileManager::removeLastBackupSession() {
    backupSessions_.with([](Sessions& sessions) {
        if (!sessions.empty()) sessions.pop_back();
    });
}

}  // namespace stowhaven
