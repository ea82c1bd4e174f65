#include "core/CydiaFileManager.h"

#include "core/ProcessFlags.h"
#include "core/SplitSize.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "items/ArchivableFolder.h"
#include "items/ArchivableFolders.h"
#include "items/PhotoVideoManager.h"
#include "items/SHSHBlob.h"
#include "items/WebClip.h"
#include "platform/Log.h"
#include "platform/dispatch/GlobalQueue.h"
#include "platform/dispatch/MainQueue.h"

#include <algorithm>

namespace stowhaven {

namespace {

std::mutex gInstanceMutex;
std::shared_ptr<CydiaFileManager> gInstance;

// What the package manager leaves behind from earlier installs goes at every start.
constexpr const char* kAptCleanUpCommand =
    "apt-get purge; apt-get -y autoremove; apt-get check; apt-get clean; apt-get -y autoclean";

// Records are equal by identifier and version, both without regard to case.
std::string internKey(const CydiaFile& package) {
    const auto part = [](const std::optional<std::string>& text) {
        return text ? "=" + textutil::lowered(*text) : std::string("nil");
    };
    return part(package.packageName()) + '\t' + part(package.version());
}

template <typename Items>
bool anySelected(const Items& items) {
    return std::any_of(items.begin(), items.end(), [](const auto& item) { return item->isSelected(); });
}

// The top-level packages that are selected for the direction, such as isBackupSelected.
auto selectedFor(PackageSection::PackageState state) {
    return [state](const auto& package) { return package->isTopLevel() && (*package.*state)(); };
}

bool anyPackageSelected(const CydiaFileManager::Packages& packages, bool backup) {
    return std::any_of(packages.begin(), packages.end(),
                       selectedFor(backup ? &CydiaFile::isBackupSelected : &CydiaFile::isRestoreSelected));
}

std::size_t countSelected(const CydiaFileManager::Packages& packages, PackageSection::PackageState state) {
    return static_cast<std::size_t>(std::count_if(packages.begin(), packages.end(), selectedFor(state)));
}

template <typename Items>
double selectedSize(const Items& items) {
    double sum = 0;
    for (const auto& item : items) {
        if (item->isSelected()) sum += item->size();
    }
    return sum;
}

}  // namespace

CydiaFileManager& CydiaFileManager::shared() {
    std::lock_guard lock(gInstanceMutex);
    if (!gInstance) {
        gInstance.reset(new CydiaFileManager());
        AbstractStorageHelper::setSessionHistoryReceiver(gInstance);
        const std::weak_ptr<CydiaFileManager> manager = gInstance;
        Supervisor& supervisor = Supervisor::shared();
        supervisor.setDeviceDataSets([manager]() -> std::shared_ptr<const DataSetSizes> { return manager.lock(); });
        supervisor.setSessionDataSets([manager]() -> std::shared_ptr<const DataSetSizes> {
            const auto self = manager.lock();
            return self ? self->currentBackupSession() : nullptr;
        });
        gInstance->startCleanUpJobs();
    }
    return *gInstance;
}

void CydiaFileManager::resetForTesting() {
    std::shared_ptr<CydiaFileManager> dropped;
    {
        std::lock_guard lock(gInstanceMutex);
        dropped = std::move(gInstance);
    }
    AbstractStorageHelper::setSessionHistoryReceiver(nullptr);
    if (dropped) dropped->waitForCleanUpJobs();
}

CydiaFileManager::CydiaFileManager() {
    Supervisor& supervisor = Supervisor::shared();
    for (StockDataSet set : kStockDataSets) dataSets_.setHas(set, true);
    if (gUseSameEncryptionKeyEnabled) {
        encryptionKey_ = supervisor.lowLevelGetStringPreferencesDataForKey("Backup_EncryptionKey");
    }
    splitSizeInMegaBytes_ = static_cast<std::int32_t>(settledSplitSizeInMegaBytes());
    observeNotifications();
    supervisor.setJobSummaryProvider([] { return CydiaFileManager::shared().jobSummary(); });
}

CydiaFileManager::~CydiaFileManager() {
    for (const auto token : observers_) NotificationCenter::defaultCenter().removeObserver(token);
}

void CydiaFileManager::startCleanUpJobs() {
    auto done = std::make_shared<std::promise<void>>();
    cleanUpJobs_ = done->get_future().share();
    GlobalQueue::get(GlobalQueue::Priority::Background).async([done] {
        ArchivableFolder::resetDefaultLists();
        Supervisor::shared().systemExecute(kAptCleanUpCommand);
        done->set_value();
    });
}

void CydiaFileManager::startPackageManagerCleanUp(std::string command) {
    auto done = std::make_shared<std::promise<void>>();
    std::shared_future<void> before;
    {
        std::lock_guard lock(mutex_);
        before = cleanUpJobs_;
        cleanUpJobs_ = done->get_future().share();
    }
    GlobalQueue::get(GlobalQueue::Priority::Background).async([done, before, command = std::move(command)] {
        before.wait();
        Supervisor::shared().systemExecute(command);
        done->set_value();
    });
}

void CydiaFileManager::waitForCleanUpJobs() const {
    std::shared_future<void> last;
    {
        std::lock_guard lock(mutex_);
        last = cleanUpJobs_;
    }
    last.wait();
}

void CydiaFileManager::observeNotifications() {
    NotificationCenter& center = NotificationCenter::defaultCenter();
    observers_.push_back(center.addObserver("ALL_ALBUMS_ACCOUNTED", &MainQueue::shared(),
                                            [this](const Notification&) { copySelectedAlbumSizes(); }));
    observers_.push_back(center.addObserver("TRANSFERT_DATA_RECEIVED", nullptr,
                                            [this](const Notification& notice) { handleDataReceived(notice); }));
    observers_.push_back(center.addObserver("DROPBOX_FILE_DOWNLOADED", nullptr,
                                            [this](const Notification& notice) { handleDropboxDataReceived(notice); }));
}

std::shared_ptr<CydiaFile> CydiaFileManager::createCydiaFileFrom(const std::string& line) {
    auto package = std::make_shared<CydiaFile>(line);
    if (!package->packageName()) return nullptr;
    return allPackages_.with([&](PackageTable& table) {
        const auto [entry, added] = table.byKey.try_emplace(internKey(*package), package);
        if (added) table.records.push_back(package);
        return entry->second;
    });
}

void CydiaFileManager::resetAllData() {
    currentPackages_.set({});
    allPackages_.set({});
    currentApplications_.set({});
    currentUserRepoSources_.set({});
    currentPackageSections_.set({});
    currentPreferencesFiles_.set({});
    currentSpringBoardData_.set({});
    backupSessions_.set({});
    resetOldData();
    setCurrentBackupSession(nullptr);
}

void CydiaFileManager::resetOldData() {
    SH_LOG("Resetting old data...");
    oldPackages_.set({});
    oldPackageSections_.set({});
}

bool CydiaFileManager::addCurrentPackage(const std::shared_ptr<CydiaFile>& package) {
    if (!package) return false;
    return currentPackages_.with([&](Packages& packages) {
        const bool known = std::any_of(packages.begin(), packages.end(),
                                       [&](const auto& present) { return present->isEqual(*package); });
        if (!known) packages.push_back(package);
        return !known;
    });
}

bool CydiaFileManager::addUserRepoSource(const std::shared_ptr<RepositorySource>& source) {
    if (!source) return false;
    return currentUserRepoSources_.with([&](Sources& sources) {
        const bool known =
            std::any_of(sources.begin(), sources.end(), [&](const auto& present) { return present->isEqual(*source); });
        if (!known) sources.push_back(source);
        return !known;
    });
}

void CydiaFileManager::removeUserRepoSourcesNamed(const std::string& name) {
    currentUserRepoSources_.with(
        [&](Sources& sources) { std::erase_if(sources, [&](const auto& source) { return source->name() == name; }); });
}

// Measures.

std::size_t CydiaFileManager::countCurrentPackages() {
    return currentPackages_.with(
        [](const Packages& packages) { return countSelected(packages, &CydiaFile::isBackupSelected); });
}

std::size_t CydiaFileManager::countRestorePackages() {
    return oldPackages_.with(
        [](const Packages& packages) { return countSelected(packages, &CydiaFile::isRestoreSelected); });
}

CydiaFileManager::Packages CydiaFileManager::selectedRestorePackages() {
    Packages installed;
    oldPackages_.with([&](const Packages& packages) {
        std::copy_if(packages.begin(), packages.end(), std::back_inserter(installed),
                     [](const auto& package) { return package->installLog().has_value(); });
    });
    return installed;
}

bool CydiaFileManager::hasAnythingSelected() {
    if (gIsBackupMode) {
        return anyPackageSelected(currentPackages(), true) || countAppleStockApps() > 0 ||
               anySelected(currentApplications()) || anySelected(currentUserRepoSources()) ||
               anySelected(currentPreferencesFiles()) || anySelected(currentSpringBoardData()) ||
               ArchivableFolders::hasAnythingSelected();
    }
    const auto session = currentBackupSession();
    if (!session) return false;
    const auto orNone = [](const auto& list) { return list.value_or(std::decay_t<decltype(*list)>{}); };
    return anyPackageSelected(oldPackages(), false) || session->countAppleStockApps() > 0 ||
           anySelected(orNone(session->applications())) || anySelected(orNone(session->repositorySources())) ||
           anySelected(session->preferencesFileObjects()) || anySelected(session->springboardDataObjects()) ||
           anySelected(orNone(session->SHSHBlobs())) || anySelected(orNone(session->webclips())) ||
           session->hasAnyArchivableFolderSelected();
}

double CydiaFileManager::appleStockAppsSize() const {
    double sum = 0;
    for (StockDataSet set : {StockDataSet::Calendar, StockDataSet::Chat, StockDataSet::Contacts, StockDataSet::Maps,
                             StockDataSet::Notes, StockDataSet::Phone, StockDataSet::Safari}) {
        sum += dataSize(set);
    }
    const PhotoVideoManager& library = PhotoVideoManager::shared();
    return sum + library.totalPhotoSize() + library.totalVideoSize();
}

void CydiaFileManager::copySelectedAlbumSizes() const {
    const PhotoVideoManager& library = PhotoVideoManager::shared();
    std::lock_guard lock(mutex_);
    dataSets_.setSize(StockDataSet::Photos, library.selectedPhotoSize());
    dataSets_.setSize(StockDataSet::Videos, library.selectedVideoSize());
}

double CydiaFileManager::selectedAppleStockAppsSize() const {
    copySelectedAlbumSizes();
    double sum = 0;
    for (StockDataSet set : kStockDataSets) {
        if (hasData(set)) sum += dataSize(set);
    }
    return sum;
}

int CydiaFileManager::countAppleStockApps() const {
    int count = 0;
    for (StockDataSet set : {StockDataSet::Calendar, StockDataSet::Chat, StockDataSet::Contacts, StockDataSet::Health,
                             StockDataSet::Maps, StockDataSet::Notes, StockDataSet::Phone, StockDataSet::Safari}) {
        count += hasData(set) ? 1 : 0;
    }
    const PhotoVideoManager& library = PhotoVideoManager::shared();
    count += library.selectedPhotoCount() != 0 ? 1 : 0;
    count += library.selectedVideoCount() != 0 ? 1 : 0;
    return count;
}

double CydiaFileManager::backupTotalSize() const {
    const double stock = selectedAppleStockAppsSize();
    SH_LOG("APP_STOCK_SIZE: {:.3f}Mb", stock);
    double applications = 0;
    for (const auto& application : currentApplications()) {
        if (application->isSelected()) applications += application->totalSize();
    }
    SH_LOG("APPS_SIZE: {:.3f}Mb", applications);
    const double preferences = selectedSize(currentPreferencesFiles());
    SH_LOG("PREFS_FILES_SIZE: {:.3f}Mb", preferences);
    const double springboard = selectedSize(currentSpringBoardData());
    SH_LOG("SPRINGBOARD_FILES_SIZE: {:.3f}Mb", springboard);
    double folders = 0;
    for (const auto& folder : ArchivableFolders::folders()) {
        if (folder->isSelected()) folders += folder->totalSize();
    }
    SH_LOG("ARCHIVABLE_FOLDER_SIZE: {:.3f}Mb", folders);
    const double total = stock + applications + preferences + springboard + folders;
    SH_LOG("TOTAL_SIZE: {:.3f}Mb", total);
    return total;
}

bool CydiaFileManager::hasData(StockDataSet set) const {
    std::lock_guard lock(mutex_);
    return dataSets_.has(set);
}

double CydiaFileManager::dataSize(StockDataSet set) const {
    std::lock_guard lock(mutex_);
    return dataSets_.size(set);
}

void CydiaFileManager::setHasData(StockDataSet set, bool has) {
    std::lock_guard lock(mutex_);
    dataSets_.setHas(set, has);
}

void CydiaFileManager::setDataSize(StockDataSet set, double size) {
    std::lock_guard lock(mutex_);
    dataSets_.setSize(set, size);
}

// Fields.

std::optional<std::string> CydiaFileManager::errorMsg() const {
    std::lock_guard lock(mutex_);
    return errorMsg_;
}

void CydiaFileManager::setErrorMsg(std::optional<std::string> message) {
    std::lock_guard lock(mutex_);
    errorMsg_ = std::move(message);
}

std::optional<std::string> CydiaFileManager::backupTitle() const {
    std::lock_guard lock(mutex_);
    return backupTitle_;
}

void CydiaFileManager::setBackupTitle(std::optional<std::string> title) {
    std::lock_guard lock(mutex_);
    backupTitle_ = std::move(title);
}

std::optional<std::string> CydiaFileManager::backupDescription() const {
    std::lock_guard lock(mutex_);
    return backupDescription_;
}

void CydiaFileManager::setBackupDescription(std::optional<std::string> description) {
    std::lock_guard lock(mutex_);
    backupDescription_ = std::move(description);
}

std::optional<std::string> CydiaFileManager::encryptionKey() const {
    std::lock_guard lock(mutex_);
    return encryptionKey_;
}

void CydiaFileManager::setEncryptionKey(std::optional<std::string> key) {
    std::lock_guard lock(mutex_);
    encryptionKey_ = std::move(key);
}

CydiaFileManager::Packages CydiaFileManager::allPackages() const {
    return allPackages_.with([](const PackageTable& table) { return table.records; });
}

std::shared_ptr<BackupSession> CydiaFileManager::currentBackupSession() const {
    std::lock_guard lock(mutex_);
    return currentBackupSession_;
}

void CydiaFileManager::setCurrentBackupSession(std::shared_ptr<BackupSession> session) {
    std::lock_guard lock(mutex_);
    currentBackupSession_ = std::move(session);
}

std::shared_ptr<BackupSession> CydiaFileManager::backupSessionInProgress() const {
    std::lock_guard lock(mutex_);
    return backupSessionInProgress_;
}

}  // namespace stowhaven
