#include "core/CydiaFile.h"
#include "core/FileSizes.h"
#include "core/Text.h"
#include "items/ArchivableFolder.h"
#include "items/ArchivableFolderTable.h"
#include "items/SHSHBlob.h"
#include "items/WebClip.h"
#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/plist/PlistCodec.h"

#include <algorithm>
#include <array>
#include <filesystem>

namespace stowhaven {

namespace {

constexpr std::int32_t kSHSHBlobsType = 2;
constexpr std::int32_t kCydiaRingtonesType = 4;
constexpr std::int32_t kWebClipsType = 9;
constexpr std::int32_t kProTubeType = 12;
constexpr std::int32_t kProTubeHDType = 13;

// The ringtones the system brings, which no backup takes.
constexpr std::array<std::string_view, 51> kStockRingtones = {
    "Alarm.m4r",         "Apex.m4r",         "Ascending.m4r",    "Bark.m4r",           "Beacon.m4r",  "Bell Tower.m4r",
    "Blues.m4r",         "Boing.m4r",        "Bulletin.m4r",     "By The Seaside.m4r", "Chimes.m4r",  "Circuit.m4r",
    "Constellation.m4r", "Cosmic.m4r",       "Crickets.m4r",     "Crystals.m4r",       "Digital.m4r", "Doorbell.m4r",
    "Duck.m4r",          "Harp.m4r",         "Hillside.m4r",     "Illuminate.m4r",     "Marimba.m4r", "Motorcycle.m4r",
    "Night Owl.m4r",     "Old Car Horn.m4r", "Old Phone.m4r",    "Piano Riff.m4r",     "Pinball.m4r", "Playtime.m4r",
    "Presto.m4r",        "Radar.m4r",        "Radiate.m4r",      "Ripples.m4r",        "Robot.m4r",   "Sci-Fi.m4r",
    "Sencha.m4r",        "Signal.m4r",       "Silk.m4r",         "Slow Rise.m4r",      "Sonar.m4r",   "Stargaze.m4r",
    "Strum.m4r",         "Summit.m4r",       "Time Passing.m4r", "Timba.m4r",          "Trill.m4r",   "Twinkle.m4r",
    "Uplift.m4r",        "Waves.m4r",        "Xylophone.m4r"};

bool isStockRingtone(const std::string& name) {
    return std::find(kStockRingtones.begin(), kStockRingtones.end(), name) != kStockRingtones.end();
}

bool isProTubeMedia(const std::string& name) {
    return name.ends_with(".mp4") || name.ends_with(".m4a") || name.ends_with(".png");
}

// The names the iTunes ringtones show, by file name.
PlistValue::Dictionary iTunesRingtoneNames() {
    const auto list = PlistCodec::readFile(DeviceRoot::path(ArchivableFolder::kITunesRingtonesList));
    const auto* entries = list ? list->asDictionary() : nullptr;
    const PlistValue* ringtones = entries ? valueForKey(*entries, "Ringtones") : nullptr;
    return ringtones && ringtones->isDictionary() ? *ringtones->asDictionary() : PlistValue::Dictionary{};
}

std::string shownRingtoneName(const PlistValue::Dictionary& names, const std::string& file) {
    const PlistValue* entry = valueForKey(names, file);
    const std::string* name = entry && entry->isDictionary() ? stringForKey(*entry->asDictionary(), "Name") : nullptr;
    return name ? *name : file;
}

}  // namespace

std::string ArchivableFolder::hostPathOf(const std::string& entry) const {
    return DeviceRoot::path(dataFolderPath_ + (dataFolderPath_.ends_with('/') ? "" : "/") + entry);
}

std::optional<std::vector<std::string>> ArchivableFolder::listContents() {
    const std::string path = DeviceRoot::path(dataFolderPath_);
    if (fFile_) {
        std::vector<std::string> files{dataFolderPath_};
        if (folderType_ == kSBSettingsType) files.emplace_back(kSBSettingsNote);
        return files;
    }
    bool isDirectory = false;
    if (!FileManager::fileExists(path, isDirectory) || !isDirectory) return std::vector<std::string>{};
    std::string error;
    auto names = FileManager::contentsOfDirectory(path, &error);
    if (!names) {
        SH_LOG("Couldn't get <{}> contents. Error: {}", dataFolderPath_, error);
        setSelected(false);
    }
    return names;
}

void ArchivableFolder::refreshStatus() {
    bool isDirectory = false;
    if (packageName_) {
        fExists_ = CydiaFile::getNameWithPackageName(packageName_).has_value();
    } else {
        fExists_ = FileManager::fileExists(DeviceRoot::path(dataFolderPath_), isDirectory) && isDirectory != fFile_;
    }
    setSelected(fExists_);
    double size = 0;
    if (fExists_ && !dataFolderPath_.empty()) {
        if (auto names = listContents()) {
            std::erase_if(*names, [](const std::string& name) { return name == "tmp" || name == "list.txt"; });
            if (!fSelectableContent_) {
                size = FileSizes::getFileSizeAtPath(DeviceRoot::path(dataFolderPath_), std::nullopt);
                if (folderType_ == kSBSettingsType) {
                    fExists_ = FileManager::fileExists(DeviceRoot::path(dataFolderPath_)) ||
                               FileManager::fileExists(DeviceRoot::path(kSBSettingsNote));
                    size += FileSizes::sizeOrNothing(DeviceRoot::path(kSBSettingsNote));
                }
                contentPaths_ = std::move(*names);
            } else {
                buildSelectableContents(*names);
                size = totalSize();
            }
        }
    }
    setSize(size);
    setSelected(size > 0);
    fAccountable_ = fExists_ && isSelected();
    if (folderType_ == kWebClipsType) buildWebclipsData();
    if (folderType_ == kSHSHBlobsType) buildSHSHBlobs();
    image_ = ArchivableFolderTable::iconName(folderType_);
}

// Items of the names, each selected and measured; ringtones of the system, and files of
// another kind where the type keeps only its own, stay out.
void ArchivableFolder::buildSelectableContents(const std::vector<std::string>& names) {
    const bool ringtones = folderType_ == kCydiaRingtonesType || folderType_ == kITunesRingtonesType;
    const PlistValue::Dictionary shownNames =
        folderType_ == kITunesRingtonesType ? iTunesRingtoneNames() : PlistValue::Dictionary{};
    const auto add = [&](const std::string& name, const std::string& hostPath) {
        auto item = std::make_shared<SelectableItem>(name);
        item->setSize(FileSizes::sizeOrNothing(hostPath));
        contentItems_.push_back(std::move(item));
    };
    contentItems_.clear();
    for (const std::string& name : names) {
        if (ringtones && isStockRingtone(name)) continue;
        if ((folderType_ == kProTubeType || folderType_ == kProTubeHDType) && !isProTubeMedia(name)) continue;
        if (folderType_ == kITunesRingtonesType && name.starts_with("Sync")) continue;
        if (fShowSubFolders_) {
            bool isDirectory = false;
            if (FileManager::fileExists(hostPathOf(name), isDirectory) && isDirectory) {
                for (const std::string& child :
                     FileManager::contentsOfDirectory(hostPathOf(name)).value_or(std::vector<std::string>{})) {
                    add(name + "/" + child, hostPathOf(name + "/" + child));
                }
            } else {
                // A plain file here is measured at a path that names it twice, and so counts nothing.
                add(name, hostPathOf(name + "/" + name));
            }
            continue;
        }
        add(folderType_ == kITunesRingtonesType ? shownRingtoneName(shownNames, name) : name, hostPathOf(name));
    }
    sortByCompare(contentItems_);
}

void ArchivableFolder::buildWebclipsData() {
    std::string error;
    const auto clips = FileManager::contentsOfDirectory(DeviceRoot::path(dataFolderPath_), &error);
    if (!clips) {
        SH_LOG("Error: {}", error);
        setSelected(false);
        return;
    }
    std::vector<std::shared_ptr<WebClip>> webClips;
    for (const std::string& clip : *clips) {
        const auto info = PlistCodec::readFile(hostPathOf(clip + "/Info.plist"));
        auto webClip = std::make_shared<WebClip>(clip, info ? ArchiveValue(*info) : ArchiveValue());
        webClip->setSize(FileSizes::sizeOrNothing(hostPathOf(clip)));
        webClips.push_back(std::move(webClip));
    }
    sortByCompare(webClips);
    contentItems_.assign(webClips.begin(), webClips.end());
}

void ArchivableFolder::buildSHSHBlobs() {
    contentItems_.clear();
    std::string error;
    const auto files = FileManager::contentsOfDirectory(DeviceRoot::path(dataFolderPath_), &error);
    if (!files) {
        SH_LOG("Couldn't read the contents of <{}>", dataFolderPath_);
        setSelected(false);
        return;
    }
    if (files->empty()) {
        SH_LOG("No SHSH blob found @ <{}>!", dataFolderPath_);
        return;
    }
    for (const std::string& file : *files) {
        const auto attributes = FileManager::attributesOfItem(hostPathOf(file));
        const bool isBlob = attributes && attributes->type == FileType::Regular &&
                            std::filesystem::path(file).extension() == ".shsh" && file.find('-') != std::string::npos;
        if (!isBlob) continue;
        auto blob = std::make_shared<SHSHBlob>(file);
        blob->setSize(static_cast<double>(attributes->size) / FileSizes::kBytesPerMegabyte);
        contentItems_.push_back(std::move(blob));
    }
}

}  // namespace stowhaven
