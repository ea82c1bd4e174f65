// Sessions come into being here, are written to the current engine, and are rolled over
// when more are kept than the engine's setting allows.

#include "archive/FileCipher.h"
#include "archive/HistoryText.h"
#include "archive/StringCipher.h"
#include "core/CydiaFileManager.h"
#include "core/ModelClasses.h"
#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "items/ArchivableFolders.h"
#include "items/DeviceItems.h"
#include "items/PhotoVideoManager.h"
#include "platform/Log.h"
#include "platform/Strings.h"
#include "storage/StorageLayout.h"

#include <fmt/format.h>

#include <any>

namespace stowhaven {

namespace {

struct FileEngineRoute {
    bool (Supervisor::*isCurrent)() const;
    const char* log;
};

// Every engine that keeps files takes the newest session's history file the same way.
constexpr FileEngineRoute kFileEngineRoutes[] = {
    {&Supervisor::isStorageBox, "\tIN Box™..."},           {&Supervisor::isStorageDropbox, "\tIN Dropbox™..."},
    {&Supervisor::isStorageFTP, "\tIN FTP™..."},           {&Supervisor::isStorageGDrive, "\tIN GDrive™..."},
    {&Supervisor::isStorageLocal, "\tLocally..."},         {&Supervisor::isStorageOwnCloud, "\tIN OwnCloud™..."},
    {&Supervisor::isStorageSkyDrive, "\tIN OneDrive™..."}, {&Supervisor::isStorageSugarSync, "\tIN SugarSync™..."}};

void postBackupFailed() { NotificationCenter::defaultCenter().post("BACKUP_FAILED"); }

// The stamp, to the second, names both the history file and the session folder, so two
// sessions of one second would share them and the later would overwrite the earlier. The
// new session's date moves on by whole seconds until its stamp is free: neither a history
// file the engine lists nor another session known here has it. The stamp keeps its form.
Date firstFreeSessionDate(Date date, const std::vector<std::string>& listed, const std::vector<Date>& known) {
    const auto taken = [&](Date candidate) {
        const std::string stamp = StorageLayout::stamp(candidate);
        return std::find(listed.begin(), listed.end(), StorageLayout::historyFileName(candidate)) != listed.end() ||
               std::any_of(known.begin(), known.end(), [&](Date other) { return StorageLayout::stamp(other) == stamp; });
    };
    while (taken(date)) date = date.dateByAddingTimeInterval(1);
    return date;
}

}  // namespace

std::shared_ptr<BackupSession> CydiaFileManager::createBackupSession(bool permanent) {
    SH_LOG("Creating backup session... (fPermanent: {:d})", permanent);
    auto session = std::make_shared<BackupSession>();
    if (permanent) {
        std::lock_guard lock(mutex_);
        session->setTitle(backupTitle_);
        session->setQuickDescription(backupDescription_);
        if (encryptionKey_) {
            session->setEncryptionKey(encrypt(*encryptionKey_));
            session->setTitle(backupTitle_ ? "🔒 " + *backupTitle_ : "🔒");
        }
        backupTitle_.reset();
        backupDescription_.reset();
    }
    session->setRawData(std::string());
    backupSelectedPackagesIn(*session);
    backupOptionsIn(*session);
    backupSessions_.with([&](Sessions& sessions) { sessions.push_back(session); });
    if (permanent) {
        std::lock_guard lock(mutex_);
        backupSessionInProgress_ = session;
    }
    if (Supervisor::shared().isStorageAddressbook()) return session;
    if (const auto engine = Supervisor::shared().currentStorageEngine(); engine && session->sessionDate()) {
        std::vector<Date> known;
        for (const auto& other : backupSessions()) {
            if (other != session && other->sessionDate()) known.push_back(*other->sessionDate());
        }
        session->setSessionDate(firstFreeSessionDate(*session->sessionDate(), engine->existingFiles(), known));
    }
    if (permanent && gAutoScanStockAppsEnabled) takeDataChoicesInto(*session);
    if (permanent) takeItemChoicesInto(*session);
    // The list may have been sorted since by the history walk under way: the session made
    // here is this one, whatever stands last.
    return session;
}

void CydiaFileManager::takeDataChoicesInto(BackupSession& session) {
    for (StockDataSet set : {StockDataSet::Calendar, StockDataSet::Contacts, StockDataSet::Chat, StockDataSet::Health,
                             StockDataSet::Maps, StockDataSet::Notes, StockDataSet::Phone, StockDataSet::Safari}) {
        session.setHasData(set, hasData(set));
        if (hasData(set)) session.setDataSize(set, dataSize(set));
    }
    const PhotoVideoManager& library = PhotoVideoManager::shared();
    const bool photos = gAutoScanPhotosEnabled && library.selectedPhotoCount() > 0;
    const bool videos = gAutoScanVideosEnabled && library.selectedVideoCount() > 0;
    session.setHasData(StockDataSet::Photos, photos);
    if (photos) session.setDataSize(StockDataSet::Photos, library.selectedPhotoSize());
    session.setHasData(StockDataSet::Videos, videos);
    if (videos) session.setDataSize(StockDataSet::Videos, library.selectedVideoSize());
    session.setPhotoVideoAlbums(std::nullopt);
    if (!photos && !videos) {
        setHasData(StockDataSet::Photos, false);
        setHasData(StockDataSet::Videos, false);
        return;
    }
    BackupSession::AlbumList albums = library.photoVideoAlbums();
    std::erase_if(albums, [](const auto& album) { return !album->isPhotoSelected() && !album->isVideoSelected(); });
    session.setPhotoVideoAlbums(std::move(albums));
}

void CydiaFileManager::takeItemChoicesInto(BackupSession& session) {
    if (gAutoScanAppStoreAppsEnabled) {
        Applications selected = currentApplications();
        std::erase_if(selected, [](const auto& application) { return !application->isSelected(); });
        session.setApplications(std::move(selected));
    } else {
        session.setApplications(std::nullopt);
    }
    if (!gAutoScanOtherOptionsEnabled) {
        session.setArchivableFolders(std::nullopt);
        return;
    }
    BackupSession::FolderList folders;
    for (const auto& folder : ArchivableFolders::folders()) {
        // A folder whose contents are the choice goes only with some of them chosen.
        if (!folder->isSelected() || (folder->canSelectContent() && !folder->hasSelectedContent())) continue;
        folders.push_back(folder->duplicateForBackup());
    }
    session.setArchivableFolders(std::move(folders));
}

void CydiaFileManager::backupSelectedPackagesIn(BackupSession& session) {
    SH_LOG("\tAdding selected packages...");
    session.setNbPackages(0);
    Supervisor& supervisor = Supervisor::shared();
    currentPackages_.with([&](const Packages& packages) {
        for (std::size_t index = 0; index < packages.size(); ++index) {
            const auto& package = packages[index];
            package->setRestoreSelected(false);
            std::optional<std::string> message;
            if (package->isBackupSelected() && session.addCydiaFile(package)) {
                oldPackages_.with([&](Packages& old) { old.push_back(package); });
                session.setNbPackages(session.nbPackages() + 1);
                message = "<" + package->name().value_or("(null)") + ">";
            }
            supervisor.notifyProgress(static_cast<double>(index) / static_cast<double>(packages.size() + 1), message);
        }
    });
}

void CydiaFileManager::backupOptionsIn(BackupSession& session) {
    Supervisor& supervisor = Supervisor::shared();
    currentUserRepoSources_.with([&](const Sources& sources) {
        if (sources.empty()) return;
        supervisor.notifyProgress(std::nullopt, "Saving user repository(ies)");
        for (const auto& source : sources) {
            if (source->isSelected()) session.addRepositorySource(source);
        }
        SH_LOG("# userRepoSources: {}", session.repositorySources().value_or(Sources{}).size());
        session.setCydiaSections(DeviceItems::cydiaSections());
    });
    const auto addSelected = [&session, &supervisor](
                                 const PreferenceFiles& files, const char* progress,
                                 void (BackupSession::*add)(const std::shared_ptr<PreferenceFile>&)) {
        if (files.empty()) return std::size_t{0};
        supervisor.notifyProgress(std::nullopt, progress);
        std::size_t added = 0;
        for (const auto& file : files) {
            if (!file->isSelected()) continue;
            (session.*add)(file);
            ++added;
        }
        return added;
    };
    const std::size_t preferences = currentPreferencesFiles_.with([&](const PreferenceFiles& files) {
        return addSelected(files, "Saving user preferences file(s)", &BackupSession::addPreferenceFile);
    });
    SH_LOG("# preferencesFiles: {}", preferences);
    const std::size_t springboard = currentSpringBoardData_.with([&](const PreferenceFiles& files) {
        return addSelected(files, "Saving user springboard file(s)", &BackupSession::addSpringboardFile);
    });
    SH_LOG("# springBoardData: {}", springboard);
}

void CydiaFileManager::storeBackupData() {
    SH_LOG("Storing backup data...");
    Supervisor& supervisor = Supervisor::shared();
    if (supervisor.isStorageAddressbook()) {
        storeBackupDataInAddressbook();
        return;
    }
    fSaveDataOk_ = false;
    const Sessions sessions = backupSessions();
    for (const FileEngineRoute& route : kFileEngineRoutes) {
        if (!(supervisor.*route.isCurrent)()) continue;
        SH_LOG("{}", route.log);
        if (sessions.empty()) {
            SH_LOG("No session to store");
            postBackupFailed();
            return;
        }
        uploadToCloud(sessions.back());
        return;
    }
}

// The history file is never enciphered on a file engine, an encrypted session's neither.
// A history the engine couldn't store ends the store there, with the engine's error as the
// message: no session folder follows it and nothing reports success, so that the job fails
// and no rollover counts the session as kept.
void CydiaFileManager::uploadToCloud(const std::shared_ptr<BackupSession>& session) {
    fSaveDataOk_ = false;
    Supervisor& supervisor = Supervisor::shared();
    supervisor.logMemoryUsage();
    if (supervisor.isCanceled()) {
        postBackupFailed();
        return;
    }
    const auto engine = supervisor.currentStorageEngine();
    const auto text = HistoryText::encode(ArchiveValue(session));
    if (!engine || !text || !session->sessionDate()) {
        SH_LOG("Couldn't write the history of <{}>", textutil::orNull(session->title()));
        postBackupFailed();
        return;
    }
    {
        std::lock_guard lock(mutex_);
        backupSessionInProgress_ = session;
    }
    supervisor.notifyProgress(std::nullopt, fmt::format("{} {}…", Strings::localized("CLOUD_UPLOAD_MESSAGE"),
                                                        supervisor.storageEngineName()));
    engine->uploadBackupHistory(*text, *session->sessionDate());
    if (engine->hasError()) {
        const std::string error = engine->errorMessage().value_or("");
        SH_LOG("Couldn't store the history of <{}>: {}", textutil::orNull(session->title()), error);
        setErrorMsg(error);
        postBackupFailed();
        return;
    }
    fSaveDataOk_ = true;
    if (hasAnythingSelected() && shouldCreateDatedDirectory()) {
        createDirectoryDated();
    } else {
        NotificationCenter::defaultCenter().post("BACKUP_SUCCEEDED");
    }
}

// Whether the session has bulk data for its dated folder. Health is left out here, and
// counted only through the data sets' count.
bool CydiaFileManager::shouldCreateDatedDirectory() {
    if (gBackupDebsEnabled || countAppleStockApps() > 0) return true;
    const Applications applications = currentApplications();
    if (std::any_of(applications.begin(), applications.end(), [](const auto& app) { return app->isSelected(); })) {
        return true;
    }
    if (ArchivableFolders::hasAnythingSelected()) return true;
    const auto session = backupSessionInProgress();
    return session && (session->hasPrefsFilesData() || session->hasSpringboardFilesData() ||
                       session->hasCalendarData() || session->hasChatData() || session->hasContactsData() ||
                       session->hasMapsData() || session->hasNotesData() || session->hasPhoneData() ||
                       session->hasPhotosData() || session->hasVideosData() || session->hasSafariData());
}

void CydiaFileManager::createDirectoryDated() {
    Supervisor::shared().logMemoryUsage();
    const Sessions sessions = backupSessions();
    {
        std::lock_guard lock(mutex_);
        backupSessionInProgress_ = sessions.empty() ? nullptr : sessions.back();
    }
    Supervisor& supervisor = Supervisor::shared();
    const auto session = backupSessionInProgress();
    const auto engine = supervisor.currentStorageEngine();
    if (supervisor.isCanceled() || !session || !session->sessionDate() || !engine) {
        postBackupFailed();
        return;
    }
    const Date date = *session->sessionDate();
    supervisor.notifyProgress(
        std::nullopt, fmt::format("{} <{}>…", Strings::localized("CREATING_DIRECTORY_MESSAGE"), date.description()));
    engine->createDirectoryDated(date);
}

// The oldest sessions go: on a file engine the first history files, whose stamps sort by
// date; on the address book the first sessions of the note. Never more than the count
// beyond those to keep, and never the session of the job that has just been stored, even
// when a clock set back gives it the oldest stamp.
void CydiaFileManager::rolloverBackups() {
    Supervisor& supervisor = Supervisor::shared();
    const std::int32_t keep = supervisor.maximumBackupsToKeep();
    if (keep == 0) return;
    if (keep < 0) {
        SH_LOG("No rollover with {} backups to keep", keep);
        return;
    }
    supervisor.notifyProgress(std::nullopt, Strings::localized("DOING_BACKUP_ROLLOVER") + "...");
    const bool addressBook = supervisor.isStorageAddressbook();
    const auto engine = supervisor.currentStorageEngine();
    const std::size_t count = addressBook ? backupSessions().size() : engine ? engine->existingFiles().size() : 0;
    const auto toRemove = static_cast<long long>(count) - keep;
    SH_LOG("nbExistingBackup: {} | nbBackupToKeep: {} | nbBackupToRemove: {}", count, keep, toRemove);
    if (toRemove <= 0) return;
    const auto justStored = backupSessionInProgress();
    const std::vector<Date> dates = rolloverDates(static_cast<std::size_t>(toRemove));
    for (const Date date : dates) {
        supervisor.notifyProgress(std::nullopt, Strings::format("REMOVING_BACKUP_DATE", date.description()));
        if (!addressBook && engine) {
            engine->setSuccessSelector(nullptr, nullptr);
            auto stored = std::make_shared<BackupSession>();
            stored->setSessionDate(date);
            engine->deleteBackupSession(stored);
        }
        // The oldest in memory goes with it, by position: the lists are in the same order.
        const Sessions sessions = backupSessions();
        const auto oldest = std::find_if(sessions.begin(), sessions.end(),
                                         [&](const auto& session) { return session != justStored; });
        if (oldest != sessions.end()) deleteBackupSession(*oldest);
    }
}

// The session just stored is never among them.
std::vector<Date> CydiaFileManager::rolloverDates(std::size_t count) {
    const auto justStored = backupSessionInProgress();
    const auto justStoredDate = justStored ? justStored->sessionDate() : std::nullopt;
    const auto isJustStored = [&](Date date) {
        return justStoredDate && StorageLayout::stamp(date) == StorageLayout::stamp(*justStoredDate);
    };
    std::vector<Date> dates;
    if (Supervisor::shared().isStorageAddressbook()) {
        const Sessions sessions = backupSessions();
        for (std::size_t index = 0; index < count && index < sessions.size(); ++index) {
            const auto date = sessions[index]->sessionDate();
            if (date && sessions[index] != justStored) dates.push_back(*date);
        }
    } else if (const auto engine = Supervisor::shared().currentStorageEngine()) {
        const std::vector<std::string> names = engine->existingFiles();
        for (std::size_t index = 0; index < count && index < names.size(); ++index) {
            const auto date = StorageLayout::dateOfHistoryFile(names[index]);
            if (date && !isJustStored(*date)) dates.push_back(*date);
        }
    }
    std::string listed;
    for (const Date date : dates) listed += (listed.empty() ? "" : ", ") + date.description();
    SH_LOG("{} sessionDate(s) to remove: ({})", dates.size(), listed);
    return dates;
}

void CydiaFileManager::deleteBackupSession(const std::shared_ptr<BackupSession>& session) {
    {
        std::lock_guard managerLock(mutex_);
        backupSessions_.with([&](Sessions& sessions) { std::erase(sessions, session); });
        if (currentBackupSession_ == session) currentBackupSession_.reset();
    }
    // The note holds every session: it is written anew without this one.
    if (Supervisor::shared().isStorageAddressbook()) storeBackupData();
}

void CydiaFileManager::changeCurrentBackupSessionTo(const std::shared_ptr<BackupSession>& session) {
    resetOldData();
    setCurrentBackupSession(session);
    if (session) session->buildObjects();
    buildOldRepositorySources();
    processLoadedPackages();
}

std::string CydiaFileManager::encrypt(std::string_view text) { return StringCipher::encrypt(text); }

std::optional<std::string> CydiaFileManager::decrypt(std::string_view text) { return StringCipher::decrypt(text); }

void CydiaFileManager::encryptFileAtPath(const std::string& path) {
    FileCipher::encryptFileAtPath(path, Supervisor::shared().getTemporaryFileName(false));
}

void CydiaFileManager::decryptFileAtPath(const std::string& path) {
    FileCipher::decryptFileAtPath(path, Supervisor::shared().getTemporaryFileName(false));
}

void CydiaFileManager::handleDataReceived(const Notification& notification) {
    const auto* received = std::any_cast<std::shared_ptr<BackupSession>>(&notification.object);
    if (received == nullptr || !*received) return;
    const auto session = *received;
    backupSessions_.with([&](Sessions& sessions) {
        sessions.push_back(session);
        sortByCompare(sessions);
    });
    Supervisor& supervisor = Supervisor::shared();
    if (supervisor.isStorageAddressbook()) {
        storeBackupDataInAddressbook();
    } else if (const auto engine = supervisor.currentStorageEngine()) {
        engine->setSuccessSelector([](const HookObject&) { Supervisor::shared().backupOrRestoreDone(); }, nullptr);
        uploadToCloud(session);
        // An import the engine couldn't store is no session of the history either.
        if (!fSaveDataOk_) backupSessions_.with([&](Sessions& sessions) { std::erase(sessions, session); });
    }
    NotificationCenter::defaultCenter().post("DATA_IMPORTED", session);
    SH_LOG("Imported <{}>!", textutil::orNull(session->title()));
}

void CydiaFileManager::handleDropboxDataReceived(const Notification& notification) {
    const auto* text = std::any_cast<std::string>(&notification.object);
    const auto root = text ? HistoryText::decode(*text, modelClasses()) : std::nullopt;
    const auto session = root ? root->object<BackupSession>() : nullptr;
    if (!session) return;
    backupSessions_.with([&](Sessions& sessions) {
        sessions.push_back(session);
        sortByCompare(sessions);
    });
}

}  // namespace stowhaven
