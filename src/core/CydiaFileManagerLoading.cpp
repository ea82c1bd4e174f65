// The load: the device's packages and the newest session of the storage, read from the
// history files and from files handed in for import.

#include "archive/HistoryText.h"
#include "core/AddressBookNote.h"
#include "core/CydiaFileManager.h"
#include "core/DataToImport.h"
#include "core/ModelClasses.h"
#include "core/ProcessFlags.h"
#include "core/SessionHistory.h"
#include "core/Supervisor.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Strings.h"
#include "platform/TemporaryDirectory.h"

#include <cmath>

namespace stowhaven {

namespace {

constexpr std::string_view kImportedTitleSuffix = " [IMPORTED DATA]!";

// The sessions of a history text, or of the note of a vCard that shares one.
CydiaFileManager::Sessions sessionsOfSharedText(const std::string& text) {
    const auto note = AddressBookNote::noteOfVCard(text);
    const auto root = HistoryText::decode(note ? *note : text, modelClasses());
    return root ? SessionHistory::sessionsOf(*root) : CydiaFileManager::Sessions{};
}

}  // namespace

void CydiaFileManager::loadPackages() {
    SH_LOG("Loading packages...");
    resetAllData();
    fInitialState_ = true;
    fISHSHit_ = CydiaFile::getNameWithPackageName("com.aerialx.ishshit").has_value();
    for (StockDataSet set : kStockDataSets) setHasData(set, false);
    if (gAutoScanStockAppsEnabled) setFlagsFromBackupDefaults();

    if (gAutoScanPkgEnabled) {
        if (currentPackages().empty()) buildCurrentBackupPackages();
        Supervisor& supervisor = Supervisor::shared();
        SH_LOG("Using {}...", supervisor.storageEngineName());
        if (supervisor.isCloudStorage()) {
            supervisor.notifyProgress(std::nullopt, Strings::localized("LOADING_RECENT_BACKUP"));
            const auto session = loadMostRecentSession();
            if (const auto engine = supervisor.currentStorageEngine()) engine->hideProgress();
            supervisor.notifyProgress(std::nullopt, Strings::localized("PROCESSING_RECENT_BACKUP"));
            processBackupData(session ? Sessions{session} : Sessions{}, true);
        }
        if (supervisor.isStorageAddressbook()) buildPreviousBackupPackages();
    }
    // A first pass above found the applications a moment ago; without one the list is
    // still empty from the reset, and the device is walked.
    processLoadedPackages(ApplicationSource::ThisLoad);
}

void CydiaFileManager::setFlagsFromBackupDefaults() {
    const Supervisor& supervisor = Supervisor::shared();
    const auto isDefault = [&supervisor](StockDataSet set) {
        const std::string key = std::string(stockDataSetName(set)) + "_Backup";
        return !supervisor.lowLevelKeyExists(key) || supervisor.lowLevelGetBooleanPreferencesDataForKey(key);
    };
    for (StockDataSet set : {StockDataSet::Calendar, StockDataSet::Chat, StockDataSet::Contacts, StockDataSet::Health,
                             StockDataSet::Maps, StockDataSet::Notes, StockDataSet::Safari}) {
        setHasData(set, isDefault(set));
    }
    // Only a phone has a call history; the library answers for photos and videos.
    setHasData(StockDataSet::Phone,
               supervisor.devicePlatform().starts_with("iPhone") && isDefault(StockDataSet::Phone));
}

// A damaged newest history is set aside and the one before it tried, down to none.
std::shared_ptr<BackupSession> CydiaFileManager::loadMostRecentSession() {
    const auto engine = Supervisor::shared().currentStorageEngine();
    if (!engine) {
        SH_LOG("No storage engine to load from");
        return nullptr;
    }
    while (true) {
        engine->setSuccessSelector(nullptr, nullptr);
        engine->loadMostRecentBackupSession();
        const auto names = engine->existingFiles();
        if (names.empty()) return nullptr;
        if (auto session = retrieveBackupDataFromPath(TemporaryDirectory::path() + "/" + names.back())) return session;
        SH_LOG("Ignoring corrupted data <{}>...", names.back());
        engine->dropDamagedHistoryFile(names.back());
        if (engine->existingFiles().empty()) return nullptr;
    }
}

std::shared_ptr<BackupSession> CydiaFileManager::retrieveBackupDataFromPath(const std::optional<std::string>& path) {
    if (!path) {
        SH_LOG("Error invalid NIL path for backup data");
        return nullptr;
    }
    bool isDirectory = false;
    if (!FileManager::fileExists(*path, isDirectory) || isDirectory) {
        SH_LOG("Error backup data <{}: {}> doesn't exist!", isDirectory ? "directory" : "file", *path);
        return nullptr;
    }
    SH_LOG("Loading data from <{}>", *path);
    std::string error;
    const auto text = FileManager::contentsOfFile(*path, &error);
    if (!text) {
        SH_LOG("Error <{}> while reading data from <{}>.", error, *path);
        return nullptr;
    }
    if (!FileManager::removeItem(*path, &error)) SH_LOG("Error <{}> while removing <{}>!", error, *path);
    const auto root = HistoryText::decode(*text, modelClasses());
    return root ? root->object<BackupSession>() : nullptr;
}

void CydiaFileManager::processBackupData(const Sessions& sessions, bool withNotification) {
    std::size_t count = 0;
    {
        std::lock_guard managerLock(mutex_);
        if (sessions.empty()) SH_LOG("Session is NULL!");
        count = backupSessions_.with([&](Sessions& known) {
            if (sessions.empty()) return known.size();
            if (!currentBackupSession()) {
                known.insert(known.end(), sessions.begin(), sessions.end());
                setCurrentBackupSession(known.back());
                return known.size();
            }
            for (const auto& session : sessions) {
                if (session->sessionDate() && hasBackupSessionDatedOn(*session->sessionDate())) continue;
                known.push_back(session);
            }
            sortByCompare(known);
            return known.size();
        });
    }
    Supervisor& supervisor = Supervisor::shared();
    if (count < 2 || !withNotification || supervisor.isStorageAddressbook()) {
        if (fInitialState_) {
            buildOldRepositorySources();
            processLoadedPackages();
        }
        fInitialState_ = false;
        return;
    }
    const auto engine = supervisor.currentStorageEngine();
    if (engine && engine->existingFiles().size() == count) {
        NotificationCenter::defaultCenter().post("BACKUP_HISTORY_LOADED");
    }
}

// Sessions of the same second are the same session: one stamp names both. Two sessions
// less than a second apart but in seconds of their own have a history and a folder each.
bool CydiaFileManager::hasBackupSessionDatedOn(Date date) {
    const auto second = [](Date moment) { return std::floor(moment.timeIntervalSinceReferenceDate()); };
    return backupSessions_.with([&](const Sessions& sessions) {
        return std::any_of(sessions.begin(), sessions.end(), [&](const auto& session) {
            return session->sessionDate() && second(*session->sessionDate()) == second(date);
        });
    });
}

void CydiaFileManager::takeHistoryFile(const std::string& path) {
    const auto session = retrieveBackupDataFromPath(path);
    processBackupData(session ? Sessions{session} : Sessions{}, false);
}

// The handed-in file stays where it is: the URL is dropped as soon as the file is read, and
// nothing removes the file.
bool CydiaFileManager::importData() {
    const auto url = DataToImport::url();
    if (!url) return false;
    const std::string path = url->starts_with("file://") ? url->substr(7) : *url;
    std::string error;
    const auto text = FileManager::contentsOfFile(path, &error);
    DataToImport::setURL(std::nullopt);
    if (!text) {
        SH_LOG("Error <{}> while reading data from <{}>.", error, *url);
        return false;
    }
    if (text->empty()) return false;
    const Sessions sessions = sessionsOfSharedText(*text);
    if (sessions.empty()) return false;
    const auto session = sessions.back();
    if (const auto& title = session->title(); title && !title->ends_with(kImportedTitleSuffix)) {
        session->setTitle(*title + std::string(kImportedTitleSuffix));
    }
    {
        std::lock_guard managerLock(mutex_);
        setCurrentBackupSession(session);
        addSessionSorted(session);
    }
    processLoadedPackages();
    return true;
}

void CydiaFileManager::addSessionSorted(const std::shared_ptr<BackupSession>& session) {
    backupSessions_.with([&](Sessions& sessions) {
        const bool known =
            std::any_of(sessions.begin(), sessions.end(), [&](const auto& other) { return other->isEqual(*session); });
        if (known) return;
        sessions.push_back(session);
        sortByCompare(sessions);
    });
}

}  // namespace stowhaven
