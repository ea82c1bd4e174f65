#pragma once

#include "archive/Codable.h"
#include "core/DataSetSizes.h"
#include "platform/Date.h"
#include "platform/plist/PlistValue.h"

#include <compare>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

class Application;
class ArchivableFolder;
class CydiaFile;
class KeyedUnarchiver;
class PhotoVideoAlbum;
class PreferenceFile;
class RepositorySource;
class SelectableItem;
class SHSHBlob;
class WebClip;

// The record of one backup: when it was made, on which device, of what, with which title,
// and for small things the data itself. Its keyed archive is the system's main persisted
// format; the bulky data lives beside it in the session's dated folder.
//
// A container that the archive lacks reads back absent (nullopt), as against empty.
class BackupSession : public Codable, public DataSetSizes {
public:
    // What a session holds of a data set's files: path to the content, or to null where
    // the file isn't held inline.
    using FileData = PlistValue::Dictionary;

    // A new session of this device and version, dated now, holding nothing yet.
    BackupSession();
    // Reads an archived session; where its data sets come from depends on the storage
    // the program works with now.
    explicit BackupSession(KeyedUnarchiver& coder);
    static std::shared_ptr<Codable> initWithCoder(KeyedUnarchiver& coder);

    std::vector<std::string> classChain() const override { return {"BackupSession", "NSObject"}; }
    void encodeWithCoder(KeyedArchiver& coder) const override;

    // Same date; sessions sort by date, the newest last.
    bool isEqual(const BackupSession& other) const { return sessionDate_ == other.sessionDate_; }
    std::partial_ordering compare(const BackupSession& other) const { return sessionDate_ <=> other.sessionDate_; }

    bool isEncrypted() const { return encryptionKey_.has_value(); }
    // The session keeps the key enciphered; a wrong key simply compares unequal.
    bool isValidEncryptionKey(const std::string& key) const;

    // Appends the package's stored line when it is selected for backup and top level.
    bool addCydiaFile(const std::shared_ptr<CydiaFile>& package);
    // Unless there is one with the same link already.
    void addRepositorySource(const std::shared_ptr<RepositorySource>& source);
    // By link.
    void sortRepositorySources();
    // Reads the file (its name is its device path) and keeps its bytes inline on the
    // address book, or for the package manager's own settings; others stand as null and
    // go to the dated folder. Records the file's ownership.
    void addPreferenceFile(const std::shared_ptr<PreferenceFile>& file);
    // The same for a SpringBoard file, whose content is a dictionary, inline on the
    // address book only.
    void addSpringboardFile(const std::shared_ptr<PreferenceFile>& file);

    bool hasRawData() const { return rawData_ && !rawData_->empty(); }
    bool hasPermissionsData() const { return permissionsData_ && !permissionsData_->empty(); }
    // Sessions of versions before 8 answer true whatever they hold.
    bool hasPrefsFilesData() const;
    bool hasSpringboardFilesData() const;
    bool hasAppDataIndexed() const { return fAppDataIndexed_; }
    void setAppDataIndexed(bool indexed) { fAppDataIndexed_ = indexed; }
    bool isInDropbox() const { return fIsInDropbox_; }
    void setIsInDropbox(bool inDropbox) { fIsInDropbox_ = inDropbox; }

    // Bundle identifier to application; applications without one are left out.
    std::map<std::string, std::shared_ptr<Application>> getApplicationsAsDictionary() const;
    bool hasAnyArchivableFolderSelected() const;

    // The item lists of the preference and SpringBoard files held.
    void buildObjects();
    void buildPreferencesFileObjects();
    void buildSpringboardDataObjects();
    // Turns the old string form of the sources ("repo.example.org ./") into sources.
    void buildRepositorySourceObjects(const std::vector<std::string>& lines);

    // Records the permissions and owners of a device path.
    void retrieveAndStoreFilePermissionData(const std::string& path);

    // Sizes in megabytes; the stock applications' sum leaves Health out.
    double appleStockAppsSize() const;
    int countAppleStockApps() const;

    bool hasData(StockDataSet set) const override { return dataSets_.has(set); }
    double dataSize(StockDataSet set) const override { return dataSets_.size(set); }
    void setHasData(StockDataSet set, bool has) { dataSets_.setHas(set, has); }
    void setDataSize(StockDataSet set, double size) { dataSets_.setSize(set, size); }
    double backupTotalSize() const override;

    std::int64_t nbPackages() const { return nbPackages_; }
    void setNbPackages(std::int64_t count) { nbPackages_ = count; }
    const std::optional<Date>& sessionDate() const { return sessionDate_; }
    void setSessionDate(std::optional<Date> date) { sessionDate_ = date; }
    const std::optional<std::string>& version() const { return version_; }
    void setVersion(std::optional<std::string> version) { version_ = std::move(version); }
    const std::optional<std::string>& deviceName() const { return deviceName_; }
    const std::optional<std::string>& title() const { return title_; }
    void setTitle(std::optional<std::string> title) { title_ = std::move(title); }
    const std::optional<std::string>& quickDescription() const { return quickDescription_; }
    void setQuickDescription(std::optional<std::string> text) { quickDescription_ = std::move(text); }
    const std::optional<std::string>& encryptionKey() const { return encryptionKey_; }
    void setEncryptionKey(std::optional<std::string> key) { encryptionKey_ = std::move(key); }
    // The stored package lines, each ended by a newline.
    const std::optional<std::string>& rawData() const { return rawData_; }
    void setRawData(std::optional<std::string> rawData);
    // Despite its name, the device's platform ("iPhone7,2").
    const std::optional<std::string>& deviceFirmware() const { return deviceFirmware_; }
    const PlistValue& cydiaSections() const { return cydiaSections_; }
    void setCydiaSections(PlistValue sections) { cydiaSections_ = std::move(sections); }

    const std::optional<FileData>& preferencesData() const { return preferencesData_; }
    void setPreferencesData(std::optional<FileData> data) { preferencesData_ = std::move(data); }
    const std::optional<FileData>& springBoardData() const { return springBoardData_; }
    void setSpringBoardData(std::optional<FileData> data) { springBoardData_ = std::move(data); }
    const std::optional<PlistValue::Dictionary>& permissionsData() const { return permissionsData_; }

    using ApplicationList = std::vector<std::shared_ptr<Application>>;
    using SourceList = std::vector<std::shared_ptr<RepositorySource>>;
    using WebClipList = std::vector<std::shared_ptr<WebClip>>;
    using BlobList = std::vector<std::shared_ptr<SHSHBlob>>;
    using FolderList = std::vector<std::shared_ptr<ArchivableFolder>>;
    using AlbumList = std::vector<std::shared_ptr<PhotoVideoAlbum>>;
    using PreferenceFileList = std::vector<std::shared_ptr<PreferenceFile>>;

    const std::optional<ApplicationList>& applications() const { return applications_; }
    void setApplications(std::optional<ApplicationList> applications) { applications_ = std::move(applications); }
    const std::optional<SourceList>& repositorySources() const { return repositorySources_; }
    const std::optional<WebClipList>& webclips() const { return webclips_; }
    void setWebclips(std::optional<WebClipList> clips) { webclips_ = std::move(clips); }
    const std::optional<BlobList>& SHSHBlobs() const { return SHSHBlobs_; }
    void setSHSHBlobs(std::optional<BlobList> blobs) { SHSHBlobs_ = std::move(blobs); }
    const std::optional<FolderList>& archivableFolders() const { return archivableFolders_; }
    void setArchivableFolders(std::optional<FolderList> folders) { archivableFolders_ = std::move(folders); }
    const std::optional<AlbumList>& photoVideoAlbums() const { return photoVideoAlbums_; }
    void setPhotoVideoAlbums(std::optional<AlbumList> albums) { photoVideoAlbums_ = std::move(albums); }

    // Copies, taken under the lists' locks, since backups add to them from several queues.
    PreferenceFileList preferencesFileObjects() const;
    PreferenceFileList springboardDataObjects() const;

private:
    // Reading, in the order the archive is read.
    void readTitles(KeyedUnarchiver& coder);
    void readRepositorySources(KeyedUnarchiver& coder);
    void readFileData(KeyedUnarchiver& coder);
    void keepOnlySpringboardFileData();
    void readDataSets(KeyedUnarchiver& coder);
    void takeDataSetFlagsFromRestoreDefaults();
    void readItemLists(KeyedUnarchiver& coder);

    void writeDataSets(KeyedArchiver& coder) const;

    static void addFile(std::optional<FileData>& store, const std::string& path, PlistValue content);
    bool isFromVersionBefore8() const;

    bool fIsInDropbox_ = false;
    bool fAppDataIndexed_ = false;
    StockDataSets dataSets_;
    std::int64_t nbPackages_ = 0;
    std::optional<Date> sessionDate_;
    std::optional<std::string> version_;
    std::optional<std::string> deviceName_;
    std::optional<std::string> title_;
    std::optional<std::string> quickDescription_;
    std::optional<std::string> encryptionKey_;
    std::optional<std::string> rawData_;
    std::optional<FileData> springBoardData_;
    std::optional<ApplicationList> applications_;
    std::optional<WebClipList> webclips_;
    std::optional<BlobList> SHSHBlobs_;
    std::optional<FolderList> archivableFolders_;
    PreferenceFileList preferencesFileObjects_;
    PreferenceFileList springboardDataObjects_;
    std::optional<SourceList> repositorySources_;
    PlistValue cydiaSections_;
    std::optional<AlbumList> photoVideoAlbums_;
    std::optional<std::string> deviceFirmware_;
    std::optional<FileData> preferencesData_;
    std::optional<PlistValue::Dictionary> permissionsData_;

    // Guard the two item lists, which backups fill from several queues and the restore
    // screens walk.
    mutable std::recursive_mutex preferencesFileObjectsMutex_;
    mutable std::recursive_mutex springboardDataObjectsMutex_;
};

}  // namespace stowhaven
