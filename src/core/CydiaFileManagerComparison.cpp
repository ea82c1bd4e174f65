// The device's side of the catalogue and its comparison with the current session: what is
// installed, and what a restore of the session would bring back.

#include "core/CydiaFileManager.h"
#include "core/FileSizes.h"
#include "core/PackageDefaults.h"
#include "core/PackageScan.h"
#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "items/ApplicationScan.h"
#include "items/DeviceItems.h"
#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Strings.h"

#include <filesystem>
#include <unordered_set>

namespace stowhaven {

namespace {

constexpr const char* kStockDataFolder = "/var/mobile/Library";

struct StockDataFolder {
    StockDataSet set;
    const char* folder;
};

constexpr StockDataFolder kStockDataFolders[] = {
    {StockDataSet::Calendar, "/Calendar"}, {StockDataSet::Chat, "/SMS"},  {StockDataSet::Contacts, "/AddressBook"},
    {StockDataSet::Health, "/Health"},     {StockDataSet::Maps, "/Maps"}, {StockDataSet::Notes, "/Notes"},
    {StockDataSet::Safari, "/Safari"}};

// The call history's settings are files among the other preferences.
double callHistorySettingsSize() {
    const std::string folder = DeviceRoot::path(std::string(kStockDataFolder) + "/Preferences");
    double size = 0;
    for (const std::string& name : FileManager::contentsOfDirectory(folder).value_or(std::vector<std::string>{})) {
        if (name.starts_with("com.apple.mobilephone")) size += FileSizes::getFileSizeAtPath(folder + "/" + name, {});
    }
    return size;
}

template <typename Items>
std::unordered_set<std::string> namesOf(const Items& items) {
    std::unordered_set<std::string> names;
    for (const auto& item : items) names.insert(item->name());
    return names;
}

// Offered for restore when the device lacks the file; otherwise as the restore default says.
void selectForRestore(const CydiaFileManager::PreferenceFiles& files, const std::unordered_set<std::string>& onDevice) {
    for (const auto& file : files) {
        file->setSelected(true);
        if (onDevice.contains(file->name())) file->selectStateForOperation(false);
    }
}

}  // namespace

void CydiaFileManager::processLoadedPackages(ApplicationSource applications) {
    std::lock_guard managerLock(mutex_);
    Supervisor& supervisor = Supervisor::shared();
    if (gAutoScanPkgEnabled && fInitialState_) judgeLoadedSession();
    processApplications(applications);
    processRawCydiaFileData();
    if (const auto session = currentBackupSession(); session && session->applications()) {
        for (const auto& application : *session->applications()) {
            if (application->isInstalled()) application->selectIfRestoreDefault();
        }
    }
    buildPackageSections();
    if (gAutoScanPkgEnabled && fInitialState_) {
        buildPreferencesData();
        buildSpringboardData();
    }
    sortLists();
    if (gAutoScanStockAppsEnabled && supervisor.isCloudStorage()) {
        supervisor.notifyProgress(std::nullopt, Strings::localized("CALCULATING_APPS_SIZE"));
        setAppleStockAppsSize();
    }
    if (const auto engine = supervisor.currentStorageEngine()) engine->hideProgress();
    NotificationCenter::defaultCenter().post("DATA_LOADED");
    SH_LOG("Packages loaded/reloaded!");
}

void CydiaFileManager::judgeLoadedSession() {
    const auto session = currentBackupSession();
    if (session && session->nbPackages() < 1) return;
    if (!session || !session->hasRawData()) {
        const std::string message = Strings::localized("NO_PREVIOUS_BACKUP");
        // An automatic backup is about to make the first session: nothing to tell the user.
        if (gAutobackupEnabled) {
            SH_LOG("{}", message);
            setErrorMsg(std::nullopt);
        } else {
            setErrorMsg(message);
        }
        return;
    }
    const auto lines = textutil::split(*session->rawData(), '\n');
    if (std::all_of(lines.begin(), lines.end(), [](const std::string& line) { return line.empty(); })) {
        setErrorMsg(Strings::localized("BACKUP_CORRUPTED"));
    }
}

void CydiaFileManager::processApplications(ApplicationSource applications) {
    Supervisor& supervisor = Supervisor::shared();
    if (!gAutoScanAppStoreAppsEnabled || !supervisor.isCloudStorage()) {
        currentApplications_.set({});
        return;
    }
    supervisor.setLargestApplication(nullptr);
    buildListOfApplications(applications);
    for (const auto& application : currentApplications()) {
        application->selectIfBackupDefault();
        if (!application->isSelected()) continue;
        const auto largest = supervisor.largestApplication();
        if (!supervisor.isFileWithinUploadLimit(application->totalBytes() / FileSizes::kBytesPerMegabyte, false,
                                                std::nullopt)) {
            application->deselect();
        } else if (!largest || application->totalSize() > largest->totalSize()) {
            supervisor.setLargestApplication(application);
        }
    }
    const auto largest = supervisor.largestApplication();
    if (largest && !supervisor.hasValidFreeSpace()) largest->deselect();
}

void CydiaFileManager::buildListOfApplications(ApplicationSource source) {
    const auto session = currentBackupSession();
    const auto sessionApplications =
        session ? session->getApplicationsAsDictionary() : std::map<std::string, std::shared_ptr<Application>>{};
    currentApplications_.with([&](Applications& applications) {
        const Applications found = source == ApplicationSource::ThisLoad ? applications : Applications{};
        applications = ApplicationScan::buildListOfApplications(sessionApplications, found);
    });
}

// By default the restore takes the packages that the device lacks in that version, among
// those of the restore's default list when there is one.
void CydiaFileManager::processRawCydiaFileData() {
    const auto session = currentBackupSession();
    const std::string rawData = session ? session->rawData().value_or("") : "";
    std::unordered_set<const CydiaFile*> installed;
    for (const auto& package : currentPackages()) installed.insert(package.get());
    const std::size_t count = oldPackages_.with([&](Packages& packages) {
        packages.clear();
        for (const std::string& line : textutil::split(rawData, '\n')) {
            const auto package = createCydiaFileFrom(line);
            if (!package) continue;
            package->setRestoreSelected(!installed.contains(package.get()) &&
                                        isPackageSelectedByDefault(*package, false));
            packages.push_back(package);
            fWasRestored_ = true;
        }
        return packages.size();
    });
    if (session) session->setNbPackages(static_cast<std::int64_t>(count));
    SH_LOG("# restorable pkg(s): {}", count);
}

void CydiaFileManager::buildCurrentBackupPackages() {
    const auto lines = PackageScan::lines();
    if (!lines) return;
    if (lines->empty()) {
        Supervisor::showAlert(Strings::localized("WARNING"), Strings::localized("CYDIA_CORRUPTED"));
        return;
    }
    currentPackages_.with([&](Packages& packages) {
        for (const std::string& line : *lines) {
            if (const auto package = createCydiaFileFrom(line)) {
                package->setBackupSelected(isPackageSelectedByDefault(*package, true));
                packages.push_back(package);
            }
        }
    });
    buildCurrentRepositorySources();
}

void CydiaFileManager::buildCurrentRepositorySources() {
    currentUserRepoSources_.set(DeviceItems::repositorySources());
}

// Like packages, a source is offered for restore when the device doesn't have it.
void CydiaFileManager::buildOldRepositorySources() {
    Supervisor::shared().notifyProgress(std::nullopt, Strings::localized("LOADING_REPO_SOURCES"));
    const auto session = currentBackupSession();
    if (!session) return;
    session->sortRepositorySources();
    const Sources onDevice = currentUserRepoSources();
    for (const auto& source : session->repositorySources().value_or(Sources{})) {
        source->setSelected(std::none_of(onDevice.begin(), onDevice.end(),
                                         [&](const auto& installed) { return installed->isEqual(*source); }));
    }
}

// The device's sections are made once per scan; the session's each time, from its packages.
void CydiaFileManager::buildPackageSections() {
    if (currentPackageSections().empty()) currentPackageSections_.set(PackageSection::sectionsOf(currentPackages()));
    oldPackageSections_.set(PackageSection::sectionsOf(oldPackages()));
}

void CydiaFileManager::buildPreferencesData() {
    if (currentPreferencesFiles().empty()) currentPreferencesFiles_.set(DeviceItems::preferenceFiles());
    const auto session = currentBackupSession();
    if (!session) return;
    PreferenceFiles files = session->preferencesFileObjects();
    std::erase_if(files, [](const auto& file) {
        const bool cydia = std::filesystem::path(file->name()).filename() == DeviceItems::kCydiaPreferencesName;
        if (cydia) file->setSelected(true);
        return cydia;
    });
    selectForRestore(files, namesOf(currentPreferencesFiles()));
}

void CydiaFileManager::buildSpringboardData() {
    if (currentSpringBoardData().empty()) currentSpringBoardData_.set(DeviceItems::springboardFiles());
    const auto session = currentBackupSession();
    if (session) selectForRestore(session->springboardDataObjects(), namesOf(currentSpringBoardData()));
}

void CydiaFileManager::sortLists() {
    backupSessions_.with([](Sessions& sessions) { sortByCompare(sessions); });
    const auto byName = [](Packages& packages) {
        std::stable_sort(packages.begin(), packages.end(),
                         [](const auto& a, const auto& b) { return a->compareByName(*b) < 0; });
    };
    oldPackages_.with(byName);
    currentPackages_.with(byName);
}

// A data set stays chosen only where the device has something of it.
void CydiaFileManager::setAppleStockAppsSize() {
    if (!gIsBackupMode) return;
    const auto keep = [this](StockDataSet set, double size) {
        setDataSize(set, size);
        setHasData(set, hasData(set) && size > 0);
    };
    for (const StockDataFolder& row : kStockDataFolders) {
        keep(row.set, FileSizes::getFileSizeAtPath(DeviceRoot::path(std::string(kStockDataFolder) + row.folder), {}));
    }
    keep(StockDataSet::Phone, callHistorySettingsSize());
}

}  // namespace stowhaven
