#pragma once

#include "core/BackupSession.h"
#include "core/CydiaFile.h"
#include "core/DataSetSizes.h"
#include "core/PackageSection.h"
#include "core/StyledText.h"
#include "items/Application.h"
#include "items/DeviceItems.h"
#include "items/PreferenceFile.h"
#include "items/RepositorySource.h"
#include "platform/dispatch/Monitored.h"
#include "platform/dispatch/NotificationCenter.h"
#include "platform/plist/PlistValue.h"
#include "storage/AbstractStorageHelper.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace stowhaven {

struct JobSummary;

// The central catalogue: what is on the device (packages, applications, sources,
// preference and SpringBoard files, the stock data sets), the sessions of the current
// storage, and the comparison of the two, which says what a restore would bring back. It
// also makes sessions, stores them, rolls the old ones over and gives their text forms.
// One instance lives as long as the process.
//
// Every list is shared between the loading thread, the screens and the jobs, and is walked
// and changed under its own lock; a step that needs the manager's lock takes it first.
class CydiaFileManager : public DataSetSizes, public SessionHistoryReceiver {
public:
    using Packages = std::vector<std::shared_ptr<CydiaFile>>;
    using Sections = std::vector<std::shared_ptr<PackageSection>>;
    using Applications = std::vector<std::shared_ptr<Application>>;
    using PreferenceFiles = std::vector<std::shared_ptr<PreferenceFile>>;
    using Sources = std::vector<std::shared_ptr<RepositorySource>>;
    using Sessions = std::vector<std::shared_ptr<BackupSession>>;

    // Made on first use: it becomes the receiver of fetched history files and the source of
    // the device's data sets for the free-space tests, and starts its clean-up jobs.
    static CydiaFileManager& shared();
    // Drops the instance, so that the next shared() makes a fresh one. For tests only.
    static void resetForTesting();
    // Returns once the package manager's clean-ups, started with the instance and after each
    // restore, have ended: an apt-get or dpkg run beside one would find its database locked.
    void waitForCleanUpJobs() const;
    // Runs COMMAND on a background queue once the clean-ups before it have ended, without
    // waiting for it.
    void startPackageManagerCleanUp(std::string command);

    ~CydiaFileManager() override;
    CydiaFileManager(const CydiaFileManager&) = delete;
    CydiaFileManager& operator=(const CydiaFileManager&) = delete;

    // Loading.

    // The whole load, on a background queue: the device's packages, the newest readable
    // session of the storage, the comparison; ends with "DATA_LOADED".
    void loadPackages();
    // The session of a history file, which is removed once read; nothing for a missing
    // file or damaged data.
    std::shared_ptr<BackupSession> retrieveBackupDataFromPath(const std::optional<std::string>& path);
    // Takes in sessions read from storage. The first sessions become the current one's
    // list; later ones join it unless a session of that second is known.
    void processBackupData(const Sessions& sessions, bool withNotification);
    // Imports the history text of a file handed to the program, as the current session;
    // false when the file held none.
    bool importData();
    // Where the comparison takes the device's applications from: a walk of the device, or
    // the list that the first pass of the same load found a moment ago.
    enum class ApplicationSource { Device, ThisLoad };
    // The comparison of the device and the current session, then "DATA_LOADED".
    void processLoadedPackages(ApplicationSource applications = ApplicationSource::Device);
    void processRawCydiaFileData();
    void buildCurrentBackupPackages();
    void buildCurrentRepositorySources();
    void buildOldRepositorySources();
    void buildPackageSections();
    void buildListOfApplications(ApplicationSource source = ApplicationSource::Device);
    void buildPreferencesData();
    void buildSpringboardData();
    void setAppleStockAppsSize();
    // The address book's way: the note of this device's record, or of the generic one.
    void buildPreviousBackupPackages();
    void processABData();
    // Reads a note of either format into backupSessions; the last session becomes current.
    void expandNote(const std::string& note);
    // The sources that an old record kept in its organisation field.
    void buildRepoSourcesFromOldFormat(const std::string& text);
    void resetAllData();
    void resetOldData();

    // The one record of a package line in the process: equal lines (same identifier and
    // version) give the same object. Nothing for a line without a package name.
    std::shared_ptr<CydiaFile> createCydiaFileFrom(const std::string& line);

    // SessionHistoryReceiver: a session of that second is known.
    bool hasBackupSessionDatedOn(Date date) override;
    void takeHistoryFile(const std::string& path) override;

    // Measures.
    std::size_t countCurrentPackages();
    std::size_t countRestorePackages();
    // The packages of the current session that went through an install.
    Packages selectedRestorePackages();
    // Anything at all for a job in the direction the user works.
    bool hasAnythingSelected();
    double appleStockAppsSize() const;
    double selectedAppleStockAppsSize() const;
    int countAppleStockApps() const;
    double backupTotalSize() const override;

    // DataSetSizes: the data sets of the device as the next backup would take them.
    bool hasData(StockDataSet set) const override;
    double dataSize(StockDataSet set) const override;
    void setHasData(StockDataSet set, bool has);
    void setDataSize(StockDataSet set, double size);

    // Storing.

    // A new session of the current selection, added to backupSessions; a permanent one
    // (a real backup) takes the title, the description, the key and the data choices.
    std::shared_ptr<BackupSession> createBackupSession(bool permanent);
    void backupSelectedPackagesIn(BackupSession& session);
    void backupOptionsIn(BackupSession& session);
    // Writes the newest session to the current engine and goes on to its dated folder.
    void storeBackupData();
    void storeBackupDataInAddressbook();
    // Posts "BACKUP_FAILED", or "BACKUP_SUCCEEDED" when there is no bulk data to follow.
    void uploadToCloud(const std::shared_ptr<BackupSession>& session);
    void createDirectoryDated();
    bool shouldCreateDatedDirectory();
    // Deletes the oldest sessions beyond the number kept on the current engine.
    void rolloverBackups();
    void deleteBackupSession(const std::shared_ptr<BackupSession>& session);
    void changeCurrentBackupSessionTo(const std::shared_ptr<BackupSession>& session);

    // The key's text as a session keeps it.
    static std::string encrypt(std::string_view text);
    static std::optional<std::string> decrypt(std::string_view text);
    // Enciphers or deciphers a file in place with the device's openssl.
    static void encryptFileAtPath(const std::string& path);
    static void decryptFileAtPath(const std::string& path);

    // The user's choice as the default of the next time, in the direction the user works.
    void saveDefaultAppleAppsOptions();
    // Stores the list under KEY with the direction's suffix; none clears the key, which
    // stands for every item.
    static void saveDefaultList(const std::optional<std::vector<std::string>>& names, const std::string& key);
    static void saveDefaultApplications(const std::optional<std::vector<std::string>>& names);
    static void saveDefaultPreferencesFiles(const std::optional<std::vector<std::string>>& names);
    static void saveDefaultSpringboardFiles(const std::optional<std::vector<std::string>>& names);
    static void saveDefaultSources(const std::optional<std::vector<std::string>>& names);

    // A session received from another device's transfer, or a history text downloaded.
    void handleDataReceived(const Notification& notification);
    void handleDropboxDataReceived(const Notification& notification);

    // Text forms.

    // The history text of all sessions (the address book's note), or of the current one
    // alone (the vCard's); nothing when there is nothing to write.
    std::optional<std::string> getABDataFormat();
    std::optional<std::string> getABVCardCurrentBackupSessionDataFormat();
    std::string getPackagesAsText();
    StyledText getPackagesForPrint();
    StyledText getBriefSystemStatus();
    // "- 3/5 label" of the selected and all items of a list.
    template <typename Items>
    static std::string stringCountFrom(const Items& items, const std::string& label);
    void emailABRecordData();
    void emailABData(const std::string& historyText);
    void emailPackagesAsText();
    std::string twitterFeedData();
    // What the calendar entry of a finished job says: the packages text, the feed text and
    // the title and description of the newest session.
    JobSummary jobSummary();
    static void displayNothingToShareAlert();

    // Fields.

    bool iShShItPresent() const { return fISHSHit_; }
    bool hasSuccessfullySaveData() const { return fSaveDataOk_; }
    // The one lasting mark of how the last backup ended.
    void setFSaveDataOk(bool ok) { fSaveDataOk_ = ok; }
    bool isInitialState() const { return fInitialState_; }
    bool isGenericData() const { return fGenericData_; }
    bool fWasRestored() const { return fWasRestored_; }
    bool wasRestored() const { return wasRestored_; }
    void setWasRestored(bool restored) { wasRestored_ = restored; }
    std::int32_t splitSizeInMegaBytes() const { return splitSizeInMegaBytes_; }

    std::optional<std::string> errorMsg() const;
    void setErrorMsg(std::optional<std::string> message);
    std::optional<std::string> backupTitle() const;
    void setBackupTitle(std::optional<std::string> title);
    std::optional<std::string> backupDescription() const;
    void setBackupDescription(std::optional<std::string> description);
    // The user's key in plain text, for the job in hand.
    std::optional<std::string> encryptionKey() const;
    void setEncryptionKey(std::optional<std::string> key);

    // Copies of the lists, taken under their locks.
    Packages allPackages() const;
    Packages currentPackages() const { return currentPackages_.copy(); }
    Packages oldPackages() const { return oldPackages_.copy(); }
    Sections currentPackageSections() const { return currentPackageSections_.copy(); }
    Sections oldPackageSections() const { return oldPackageSections_.copy(); }
    Applications currentApplications() const { return currentApplications_.copy(); }
    PreferenceFiles currentPreferencesFiles() const { return currentPreferencesFiles_.copy(); }
    PreferenceFiles currentSpringBoardData() const { return currentSpringBoardData_.copy(); }
    Sources currentUserRepoSources() const { return currentUserRepoSources_.copy(); }
    Sessions backupSessions() const { return backupSessions_.copy(); }
    // What a restore brings onto the device joins the device's lists: a package unless an
    // equal one is there, a source unless one with the same link is; false when not added.
    bool addCurrentPackage(const std::shared_ptr<CydiaFile>& package);
    bool addUserRepoSource(const std::shared_ptr<RepositorySource>& source);
    // Takes the device's sources of that name out of the list.
    void removeUserRepoSourcesNamed(const std::string& name);
    std::shared_ptr<BackupSession> currentBackupSession() const;
    std::shared_ptr<BackupSession> backupSessionInProgress() const;

private:
    CydiaFileManager();

    // The interning table: every record, and each one by its identifier and version.
    struct PackageTable {
        Packages records;
        std::unordered_map<std::string, std::shared_ptr<CydiaFile>> byKey;
    };

    void startCleanUpJobs();
    void observeNotifications();
    void setFlagsFromBackupDefaults();
    // The newest session of a file engine that reads; nothing when none does.
    std::shared_ptr<BackupSession> loadMostRecentSession();
    void judgeLoadedSession();
    void processApplications(ApplicationSource applications);
    void sortLists();
    void setCurrentBackupSession(std::shared_ptr<BackupSession> session);
    // Adds a session and sorts, unless one of its second is there.
    void addSessionSorted(const std::shared_ptr<BackupSession>& session);
    void removeLastBackupSession();
    // The albums' selected sizes into the photo and video data sets.
    void copySelectedAlbumSizes() const;
    void takeDataChoicesInto(BackupSession& session);
    void takeItemChoicesInto(BackupSession& session);
    // The dates of the first COUNT entries of the rollover list.
    std::vector<Date> rolloverDates(std::size_t count);

    std::atomic<bool> fISHSHit_{false};
    std::atomic<bool> fSaveDataOk_{false};
    std::atomic<bool> fInitialState_{true};
    std::atomic<bool> fGenericData_{false};
    std::atomic<bool> fWasRestored_{false};
    std::atomic<bool> wasRestored_{false};
    std::atomic<std::int32_t> splitSizeInMegaBytes_{0};

    // The manager's own lock, taken before any list's.
    mutable std::recursive_mutex mutex_;
    // Mutable: the album sizes are copied in whenever the selected sizes are read.
    mutable StockDataSets dataSets_;
    std::optional<std::string> errorMsg_;
    std::optional<std::string> backupTitle_;
    std::optional<std::string> backupDescription_;
    std::optional<std::string> encryptionKey_;
    std::shared_ptr<BackupSession> currentBackupSession_;
    std::shared_ptr<BackupSession> backupSessionInProgress_;

    Monitored<PackageTable> allPackages_;
    Monitored<Applications> currentApplications_;
    Monitored<Sections> oldPackageSections_;
    Monitored<PreferenceFiles> currentPreferencesFiles_;
    Monitored<PreferenceFiles> currentSpringBoardData_;
    Monitored<Sections> currentPackageSections_;
    Monitored<Packages> currentPackages_;
    Monitored<Packages> oldPackages_;
    Monitored<Sources> currentUserRepoSources_;
    Monitored<Sessions> backupSessions_;

    std::vector<NotificationCenter::ObserverToken> observers_;
    // The last clean-up started, which runs after those before it; under mutex_.
    std::shared_future<void> cleanUpJobs_;
};

template <typename Items>
std::string CydiaFileManager::stringCountFrom(const Items& items, const std::string& label) {
    if (items.empty()) return "- 0 " + label + "\n";
    long long selected = 0;
    for (const auto& item : items) selected += item->isSelected() ? 1 : 0;
    auto total = static_cast<long long>(items.size());
    // The package manager's own settings file is no choice of the user's.
    if (items.back()->name().ends_with(DeviceItems::kCydiaPreferencesName)) {
        --selected;
        --total;
    }
    return "- " + std::to_string(selected) + "/" + std::to_string(total) + " " + label + "\n";
}

}  // namespace stowhaven
