#include "archive/KeyedArchiver.h"
#include "archive/KeyedUnarchiver.h"
#include "core/BackupSession.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "items/Application.h"
#include "items/ArchivableFolder.h"
#include "items/PhotoVideoAlbum.h"
#include "items/RepositorySource.h"
#include "items/SHSHBlob.h"
#include "items/WebClip.h"
#include "platform/DateFormatter.h"
#include "platform/Log.h"

#include <algorithm>

namespace stowhaven {

namespace {

// The padlock that begins the title of an encrypted session, with its blank.
constexpr std::string_view kPadlock = "\xf0\x9f\x94\x92";
// Old archives kept the description under this key.
constexpr const char* kRetiredDescriptionKey = "memo";
// A SpringBoard data key of the old form, which holds the whole of the SpringBoard's settings.
constexpr const char* kWholeSpringboardKey = "SPRINGBOARD";

// Default titles, in the device's time zone.
const DateFormatter& titleFormatter() {
    static const DateFormatter formatter("yyyy-MM-dd @ HH:mm:ss");
    return formatter;
}

// "fCalendar": the set's flag in the archive.
std::string flagKey(StockDataSet set) { return "f" + std::string(stockDataSetName(set)); }

// "calendarDataSize": the set's size in the archive.
std::string sizeKey(StockDataSet set) {
    std::string key(stockDataSetName(set));
    key.front() = static_cast<char>(key.front() - 'A' + 'a');
    return key + "DataSize";
}

template <typename Objects>
ArchiveValue mutableArrayOf(const std::optional<Objects>& objects) {
    return objects ? ArchiveValue::mutableArray(ArchiveValue::arrayOf(*objects)) : ArchiveValue();
}

ArchiveValue mutableDictionaryOf(const PlistValue::Dictionary& entries) {
    return ArchiveValue::mutableDictionary(ArchiveValue::Dictionary(entries.begin(), entries.end()));
}

// A dictionary of property-list data under the key; nothing, with a log line, for another kind.
std::optional<PlistValue::Dictionary> decodeDictionaryOfData(KeyedUnarchiver& coder, std::string_view key) {
    auto value = coder.decodePropertyListForKey(key);
    if (!value) return std::nullopt;
    if (auto* entries = value->asDictionary()) return std::move(*entries);
    SH_LOG("The value under <{}> is not a dictionary", key);
    return std::nullopt;
}

// Only the file names of a SpringBoard's icon layout, state and backgrounds are its data.
bool isSpringboardFileName(const std::string& path) {
    const std::string name = path.substr(path.find_last_of('/') + 1);
    if (!name.ends_with(".plist")) return false;
    return name.starts_with("applicationstate") || name.starts_with("Icon") || name.starts_with("HomeBackground") ||
           name.starts_with("LockBackground");
}

}  // namespace

void BackupSession::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeObject(version_, "version");
    coder.encodeObject(deviceName_, "deviceName");
    coder.encodeObject(title_, "title");
    coder.encodeObject(quickDescription_, "quickDescription");
    coder.encodeObject(encryptionKey_, "encryptionKey");
    coder.encodeObject(sessionDate_, "sessionDate");
    coder.encodeInt64(nbPackages_, "nbPackages");
    coder.encodeObject(mutableArrayOf(repositorySources_), "repositorySources");
    coder.encodeObject(rawData_ ? ArchiveValue::mutableString(*rawData_) : ArchiveValue(), "rawData");
    coder.encodeObject(deviceFirmware_, "deviceFirmware");
    coder.encodeObject(mutableArrayOf(applications_), "applications");
    coder.encodeObject(mutableArrayOf(SHSHBlobs_), "SHSHBlobs");
    coder.encodeObject(mutableArrayOf(webclips_), "webclips");
    coder.encodeObject(cydiaSections_, "cydiaSections");
    const auto encodeIfPresent = [&](const auto& entries, const char* key, const char* absence) {
        if (entries) {
            coder.encodeObject(mutableDictionaryOf(*entries), key);
        } else {
            SH_LOG("{}", absence);
        }
    };
    encodeIfPresent(preferencesData_, "preferencesData", "No preferences data!");
    encodeIfPresent(springBoardData_, "springBoardData", "No springboard data!");
    encodeIfPresent(permissionsData_, "permissionsData", "No permission data");
    if (Supervisor::shared().isCloudStorage()) writeDataSets(coder);
}

void BackupSession::writeDataSets(KeyedArchiver& coder) const {
    coder.encodeBool(fAppDataIndexed_, "fAppDataIndexed");
    for (const StockDataSet set : kStockDataSets) coder.encodeBool(hasData(set), flagKey(set));
    for (const StockDataSet set : kStockDataSets) coder.encodeDouble(dataSize(set), sizeKey(set));
    if (photoVideoAlbums_ && !photoVideoAlbums_->empty()) {
        coder.encodeObject(mutableArrayOf(photoVideoAlbums_), "photoVideoAlbums");
    }
    coder.encodeObject(mutableArrayOf(archivableFolders_), "archivableFolders");
}

// A field the archive lacks stays absent, false or 0: nothing here goes through the
// constructor of a new session.
BackupSession::BackupSession(KeyedUnarchiver& coder) {
    readTitles(coder);
    deviceFirmware_ = coder.decodeStringForKey("deviceFirmware");
    nbPackages_ = coder.decodeInt32ForKey("nbPackages");
    cydiaSections_ = coder.decodePropertyListForKey("cydiaSections").value_or(PlistValue());
    readRepositorySources(coder);
    readFileData(coder);
    buildObjects();
    if (!Supervisor::shared().isCloudStorage()) return;
    fAppDataIndexed_ = coder.decodeBoolForKey("fAppDataIndexed");
    readDataSets(coder);
    readItemLists(coder);
}

void BackupSession::readTitles(KeyedUnarchiver& coder) {
    version_ = coder.decodeStringForKey("version");
    deviceName_ = coder.decodeStringForKey("deviceName");
    title_ = coder.decodeStringForKey("title");
    quickDescription_ = coder.decodeStringForKey("quickDescription");
    if (!quickDescription_) quickDescription_ = coder.decodeStringForKey(kRetiredDescriptionKey);
    encryptionKey_ = coder.decodeStringForKey("encryptionKey");
    if (encryptionKey_ && !(title_ && title_->starts_with(kPadlock))) {
        title_ = std::string(kPadlock) + " " + textutil::orNull(title_);
    }
    sessionDate_ = coder.decodeDateForKey("sessionDate");
    if (!title_ && sessionDate_) title_ = titleFormatter().stringFromDate(*sessionDate_);
}

// Old archives keep the sources as plain lines of text.
void BackupSession::readRepositorySources(KeyedUnarchiver& coder) {
    const auto elements = coder.decodeArrayForKey("repositorySources");
    if (!elements) return;
    if (!elements->empty() && !elements->back().object<RepositorySource>()) {
        std::vector<std::string> lines;
        for (const ArchiveValue& element : *elements) {
            if (const std::string* line = element.asString()) lines.push_back(*line);
        }
        buildRepositorySourceObjects(lines);
        return;
    }
    repositorySources_.emplace();
    for (const ArchiveValue& element : *elements) {
        if (auto source = element.object<RepositorySource>()) repositorySources_->push_back(std::move(source));
    }
}

void BackupSession::readFileData(KeyedUnarchiver& coder) {
    rawData_ = coder.decodeStringForKey("rawData");
    preferencesData_ = decodeDictionaryOfData(coder, "preferencesData");
    springBoardData_ = decodeDictionaryOfData(coder, "springBoardData");
    permissionsData_ = decodeDictionaryOfData(coder, "permissionsData");
    if (springBoardData_ && !springBoardData_->contains(kWholeSpringboardKey)) keepOnlySpringboardFileData();
}

void BackupSession::keepOnlySpringboardFileData() {
    std::vector<std::string> dropped;
    std::erase_if(*springBoardData_, [&](const auto& entry) {
        if (isSpringboardFileName(entry.first)) return false;
        dropped.push_back(entry.first);
        return true;
    });
    if (!dropped.empty()) SH_LOG("These <{}> are not springboard file data!", fmt::join(dropped, ", "));
}

// The flags in the archive don't count: the user's restore defaults decide, then whether
// the set has a size at all.
void BackupSession::readDataSets(KeyedUnarchiver& coder) {
    takeDataSetFlagsFromRestoreDefaults();
    auto albums = coder.decodeArrayOfObjectsOfClass<PhotoVideoAlbum>("photoVideoAlbums");
    if (!albums) {
        setHasData(StockDataSet::Photos, false);
        setHasData(StockDataSet::Videos, false);
    }
    photoVideoAlbums_ = std::move(albums);
    for (const StockDataSet set : kStockDataSets) {
        setDataSize(set, coder.decodeDoubleForKey(sizeKey(set)));
        if (dataSize(set) == 0) setHasData(set, false);
    }
}

void BackupSession::takeDataSetFlagsFromRestoreDefaults() {
    const Supervisor& supervisor = Supervisor::shared();
    for (const StockDataSet set : kStockDataSets) {
        const std::string key = std::string(stockDataSetName(set)) + "_Restore";
        bool chosen = false;
        if (set == StockDataSet::Photos || set == StockDataSet::Videos) {
            const auto albums = supervisor.lowLevelGetArrayPreferencesDataForKey(key);
            chosen = (albums && !albums->empty()) || !supervisor.lowLevelKeyExists(key);
        } else {
            chosen = supervisor.lowLevelGetBooleanPreferencesDataForKey(key) || !supervisor.lowLevelKeyExists(key);
        }
        // Only a phone has phone data.
        if (set == StockDataSet::Phone && !supervisor.devicePlatform().starts_with("iPhone")) chosen = false;
        setHasData(set, chosen);
    }
}

void BackupSession::readItemLists(KeyedUnarchiver& coder) {
    applications_ = coder.decodeArrayOfObjectsOfClass<Application>("applications");
    webclips_ = coder.decodeArrayOfObjectsOfClass<WebClip>("webclips");
    SHSHBlobs_ = coder.decodeArrayOfObjectsOfClass<SHSHBlob>("SHSHBlobs");
    archivableFolders_ = coder.decodeArrayOfObjectsOfClass<ArchivableFolder>("archivableFolders");
    if (archivableFolders_) sortByCompare(*archivableFolders_);
}

}  // namespace stowhaven
