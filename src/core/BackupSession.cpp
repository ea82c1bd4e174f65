#include "core/BackupSession.h"

#include "archive/StringCipher.h"
#include "core/CydiaFile.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "items/Application.h"
#include "items/ArchivableFolder.h"
#include "items/DeviceItems.h"
#include "items/PhotoVideoAlbum.h"
#include "items/PreferenceFile.h"
#include "items/RepositorySource.h"
#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/FileOwnership.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/plist/PlistCodec.h"

#include <algorithm>
#include <charconv>
#include <numeric>

namespace stowhaven {

namespace {

// The system's file-attribute keys, as the session records them.
constexpr const char* kPosixPermissionsKey = "NSFilePosixPermissions";
constexpr const char* kOwnerAccountNameKey = "NSFileOwnerAccountName";
constexpr const char* kGroupOwnerAccountNameKey = "NSFileGroupOwnerAccountName";

// The leading digits of the text as a number, 0 without any: "8.1" gives 8, "7" gives 7.
long long leadingInteger(std::string_view text) {
    long long value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

}  // namespace

BackupSession::BackupSession()
    : fAppDataIndexed_(true),
      sessionDate_(Platform::current().clock().date()),
      springBoardData_(FileData{}),
      applications_(ApplicationList{}),
      webclips_(WebClipList{}),
      SHSHBlobs_(BlobList{}),
      archivableFolders_(FolderList{}),
      repositorySources_(SourceList{}),
      photoVideoAlbums_(AlbumList{}),
      preferencesData_(FileData{}),
      permissionsData_(PlistValue::Dictionary{}) {
    const Supervisor& supervisor = Supervisor::shared();
    fIsInDropbox_ = supervisor.isStorageDropbox();
    version_ = supervisor.version();
    deviceFirmware_ = supervisor.devicePlatform();
    deviceName_ = supervisor.deviceName();
}

std::shared_ptr<Codable> BackupSession::initWithCoder(KeyedUnarchiver& coder) {
    return std::make_shared<BackupSession>(coder);
}

bool BackupSession::isValidEncryptionKey(const std::string& key) const {
    return encryptionKey_ == StringCipher::encrypt(key);
}

void BackupSession::setRawData(std::optional<std::string> rawData) { rawData_ = std::move(rawData); }

bool BackupSession::addCydiaFile(const std::shared_ptr<CydiaFile>& package) {
    if (!package || !package->packageName()) {
        SH_LOG("Can't store NIL for <{}>", package ? package->description() : "(null)");
        return false;
    }
    if (!package->isBackupSelected() || !package->isTopLevel()) return false;
    if (!rawData_) rawData_.emplace();
    *rawData_ += package->backupData() + "\n";
    return true;
}

void BackupSession::addRepositorySource(const std::shared_ptr<RepositorySource>& source) {
    if (!repositorySources_) repositorySources_.emplace();
    const bool known = source && std::any_of(repositorySources_->begin(), repositorySources_->end(),
                                             [&](const auto& stored) { return stored->isEqual(*source); });
    if (!source || known) {
        SH_LOG("Skipping <{}>...", source ? source->description() : "(null)");
        return;
    }
    repositorySources_->push_back(source);
}

void BackupSession::sortRepositorySources() {
    if (!repositorySources_) return;
    sortByCompare(*repositorySources_);
}

void BackupSession::addFile(std::optional<FileData>& store, const std::string& path, PlistValue content) {
    if (!store) store.emplace();
    store->insert_or_assign(path, std::move(content));
}

void BackupSession::addPreferenceFile(const std::shared_ptr<PreferenceFile>& file) {
    if (!file || file->name().empty() || (preferencesData_ && preferencesData_->contains(file->name()))) {
        SH_LOG("Skipping <{}>...", file ? file->description() : "(null)");
        return;
    }
    const std::string& path = file->name();
    std::string error;
    const auto bytes = FileManager::contentsOfFile(DeviceRoot::path(path), &error);
    if (!bytes) {
        SH_LOG("Couldn't load data from <{}>", path);
        SH_LOG("Error <{}> while reading <{}>", error, path);
        return;
    }
    const bool keptInline = Supervisor::shared().isStorageAddressbook() || path == DeviceItems::kCydiaPreferencesPath;
    addFile(preferencesData_, path, keptInline ? PlistValue::data(*bytes) : PlistValue());
    {
        std::lock_guard lock(preferencesFileObjectsMutex_);
        preferencesFileObjects_.push_back(file);
    }
    retrieveAndStoreFilePermissionData(path);
}

void BackupSession::addSpringboardFile(const std::shared_ptr<PreferenceFile>& file) {
    if (!file || file->name().empty() || (springBoardData_ && springBoardData_->contains(file->name()))) return;
    const std::string& path = file->name();
    const auto content = PlistCodec::readFile(DeviceRoot::path(path));
    if (!content || !content->isDictionary()) {
        SH_LOG("Couldn't load data from <{}>", path);
        return;
    }
    addFile(springBoardData_, path, Supervisor::shared().isStorageAddressbook() ? *content : PlistValue());
    {
        std::lock_guard lock(springboardDataObjectsMutex_);
        springboardDataObjects_.push_back(file);
    }
    retrieveAndStoreFilePermissionData(path);
}

// The version's digits read as one number: "7" is 7 and comes before 8, "7.1" is 71.
bool BackupSession::isFromVersionBefore8() const {
    return leadingInteger(textutil::replacingAll(version_.value_or(""), ".", "")) < 8;
}

bool BackupSession::hasPrefsFilesData() const { return isFromVersionBefore8() || !preferencesFileObjects().empty(); }

bool BackupSession::hasSpringboardFilesData() const {
    return isFromVersionBefore8() || !springboardDataObjects().empty();
}

std::map<std::string, std::shared_ptr<Application>> BackupSession::getApplicationsAsDictionary() const {
    std::map<std::string, std::shared_ptr<Application>> byIdentifier;
    if (!applications_) return byIdentifier;
    for (const auto& application : *applications_) {
        if (!application->bundleIdentifier()) {
            SH_LOG("Skipping <{}>", application->description());
            continue;
        }
        byIdentifier.emplace(*application->bundleIdentifier(), application);
    }
    return byIdentifier;
}

bool BackupSession::hasAnyArchivableFolderSelected() const {
    if (!archivableFolders_) return false;
    return std::any_of(archivableFolders_->begin(), archivableFolders_->end(), [](const auto& folder) {
        return folder->isSelected() || (folder->canSelectContent() && folder->hasSelectedContent());
    });
}

void BackupSession::buildObjects() {
    buildPreferencesFileObjects();
    buildSpringboardDataObjects();
}

namespace {

BackupSession::PreferenceFileList preferenceFilesOf(const std::optional<BackupSession::FileData>& data) {
    BackupSession::PreferenceFileList files;
    if (!data) return files;
    for (const auto& [path, content] : *data) files.push_back(std::make_shared<PreferenceFile>(path, content));
    sortByCompare(files);
    return files;
}

}  // namespace

void BackupSession::buildPreferencesFileObjects() {
    PreferenceFileList files = preferenceFilesOf(preferencesData_);
    std::lock_guard lock(preferencesFileObjectsMutex_);
    preferencesFileObjects_ = std::move(files);
}

void BackupSession::buildSpringboardDataObjects() {
    PreferenceFileList files = preferenceFilesOf(springBoardData_);
    std::lock_guard lock(springboardDataObjectsMutex_);
    springboardDataObjects_ = std::move(files);
}

BackupSession::PreferenceFileList BackupSession::preferencesFileObjects() const {
    std::lock_guard lock(preferencesFileObjectsMutex_);
    return preferencesFileObjects_;
}

BackupSession::PreferenceFileList BackupSession::springboardDataObjects() const {
    std::lock_guard lock(springboardDataObjectsMutex_);
    return springboardDataObjects_;
}

void BackupSession::buildRepositorySourceObjects(const std::vector<std::string>& lines) {
    SourceList sources;
    for (const std::string& line : lines) {
        if (line.starts_with("#")) continue;
        std::string link = line;
        if (link.ends_with(" ./")) link.resize(link.size() - 3);
        if (!link.starts_with("http://")) link = "http://" + link;
        sources.push_back(std::make_shared<RepositorySource>(PlistValue::Dictionary{
            {"URI", link}, {"Type", "deb"}, {"Distribution", "./"}, {"Sections", PlistValue::Array{}}}));
    }
    sortByCompare(sources);
    repositorySources_ = std::move(sources);
}

void BackupSession::retrieveAndStoreFilePermissionData(const std::string& path) {
    std::string error;
    const auto ownership = FileOwnership::read(DeviceRoot::path(path), &error);
    if (!ownership) {
        SH_LOG("<{}> while getting <{}> attributes!", error, path);
        return;
    }
    PlistValue::Dictionary attributes{{kPosixPermissionsKey, ownership->permissions},
                                      {kOwnerAccountNameKey, ownership->ownerAccountName}};
    // Records have always named the owner as the group too; a restore sets it so.
    if (ownership->groupOwnerAccountName) attributes.emplace(kGroupOwnerAccountNameKey, ownership->ownerAccountName);
    if (!permissionsData_) permissionsData_.emplace();
    permissionsData_->insert_or_assign(path, std::move(attributes));
}

double BackupSession::appleStockAppsSize() const {
    double sum = 0;
    for (const StockDataSet set : kStockDataSets) {
        if (set != StockDataSet::Health) sum += dataSize(set);
    }
    return sum;
}

int BackupSession::countAppleStockApps() const {
    return static_cast<int>(
        std::count_if(kStockDataSets.begin(), kStockDataSets.end(), [&](StockDataSet set) { return hasData(set); }));
}

double BackupSession::backupTotalSize() const {
    double total = appleStockAppsSize();
    if (applications_) {
        for (const auto& application : *applications_) total += application->totalSize();
    }
    for (const auto& file : preferencesFileObjects()) total += file->size();
    for (const auto& file : springboardDataObjects()) total += file->size();
    if (archivableFolders_) {
        for (const auto& folder : *archivableFolders_) total += folder->totalSize();
    }
    return total;
}

}  // namespace stowhaven
