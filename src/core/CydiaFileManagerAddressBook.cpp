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
#include "storage/addressbook/ABAddressBookHelper.h"

namespace stowhaven {

namespace {

using Book = ABAddressBookHelper;

// Exchange ActiveSync keeps no longer a note.
constexpr std::size_t kActiveSyncNoteLimit = 8620;

std::string deviceFirstName() { return Book::firstNameOfDevice(Supervisor::shared().deviceUID()); }

// The record of this device, made with the program's name, group and links.
bool createDeviceRecord(Book& book) {
    Supervisor& supervisor = Supervisor::shared();
    supervisor.notifyProgress(std::nullopt, Strings::localized("CREATING_ADDRESSBOOK_ENTRY"));
    return book.createDeviceRecord(deviceFirstName(), supervisor.deviceName());
}

}  // namespace

void CydiaFileManager::buildPreviousBackupPackages() {
    const auto book = Book::shared();
    fGenericData_ = false;
    if (!book) {
        SH_LOG("No address book to read");
        fGenericData_ = true;
        return;
    }
    book->upgradeStowhavenABEntry();
    if (!book->existsABRecordWithFirstName(deviceFirstName(), Book::kLastName)) {
        // A generic record is read, and the next store makes this device's own beside it.
        fGenericData_ = book->existsABRecordWithFirstName(Book::kGenericFirstName, Book::kLastName);
        if (!fGenericData_) {
            SH_LOG("No entry found for previous backup");
            fGenericData_ = true;
            return;
        }
    }
    processABData();
}

void CydiaFileManager::processABData() {
    const auto book = Book::shared();
    const auto note = book ? book->getCurrentABRecordNote() : std::nullopt;
    if (!note || note->empty()) {
        SH_LOG("\tEmpty note => Skipping record!");
        return;
    }
    const bool oldFormat = AddressBookNote::isOldFormat(*note);
    SH_LOG("Processing note size: {}", note->size());
    expandNote(*note);
    if (oldFormat) {
        buildRepoSourcesFromOldFormat(book->getCurrentABRecordOrganization().value_or(""));
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
// in memory stays the note's, and leaves its message (empty when the log has the reason).
void CydiaFileManager::storeBackupDataInAddressbook() {
    Supervisor& supervisor = Supervisor::shared();
    if (supervisor.isCanceled()) return;
    SH_LOG("\tIN addressbook...");
    fSaveDataOk_ = false;
    const auto refuse = [this](const std::string& message) {
        setErrorMsg(message);
        SH_LOG("Data failed to be saved into addressbook! Error: {}", message);
        removeLastBackupSession();
    };
    auto note = getABDataFormat();
    const auto sessions = backupSessions();
    if (note && gEncryptBackupEnabled && !sessions.empty() && sessions.back()->isEncrypted()) {
        const std::string path = supervisor.getTemporaryFileName(false);
        std::string error;
        if (!FileManager::writeFile(path, *note, &error)) {
            SH_LOG("Couldn't write to <{}>. Error: {}", path, error);
            refuse("");
            return;
        }
        encryptFileAtPath(path);
        note = FileManager::contentsOfFile(path, &error);
        if (!note) SH_LOG("Error while encrypted data: {}!", error);
    }
    setErrorMsg(std::nullopt);
    const auto book = Book::shared();
    if (!note || !book) {
        refuse("");
        return;
    }
    if (note->size() > kActiveSyncNoteLimit && book->isActiveSyncEnabled()) {
        refuse(Strings::format("ACTIVE_SYNC_LIMIT", note->size()));
        return;
    }
    bool ok = !fGenericData_ || createDeviceRecord(*book);
    supervisor.notifyProgress(std::nullopt, Strings::localized("UPDATING_ADDRESSBOOK_ENTRY"));
    ok = book->updateABRecordNoteData(*note) && ok;
    if (supervisor.isCanceled()) return;
    ok = book->saveABRecordChange() && ok;
    supervisor.logMemoryUsage();
    supervisor.removeTemporaryFolders();
    supervisor.removeTemporaryFiles();
    if (!ok) {
        refuse("");
        return;
    }
    fSaveDataOk_ = true;
    fGenericData_ = false;
    SH_LOG("All data saved into addressbook!");
}

void CydiaFileManager::removeLastBackupSession() {
    backupSessions_.with([](Sessions& sessions) {
        if (!sessions.empty()) sessions.pop_back();
    });
}

}  // namespace stowhaven
