#include "items/ArchivableFolder.h"

#include "archive/KeyedArchiver.h"
#include "archive/KeyedUnarchiver.h"
#include "core/Supervisor.h"
#include "items/ArchivableFolderTable.h"
#include "items/SelectionDefaults.h"
#include "platform/Log.h"
#include "platform/Strings.h"

#include <algorithm>
#include <numeric>

namespace stowhaven {

namespace {

double sumOfSizes(const std::vector<std::shared_ptr<SelectableItem>>& items, bool selectedOnly) {
    return std::accumulate(items.begin(), items.end(), 0.0, [&](double sum, const auto& item) {
        return !selectedOnly || item->isSelected() ? sum + item->size() : sum;
    });
}

// The types, as text, of the places without selectable items that are chosen by default.
SelectionDefaults& defaultTypes() {
    static SelectionDefaults lists("Backup_ArchivableFolders", "Restore_ArchivableFolders");
    return lists;
}

std::string sideSuffix(bool backup) { return backup ? "_Backup" : "_Restore"; }

}  // namespace

ArchivableFolder::ArchivableFolder(std::string name, std::optional<std::string> packageName, std::int32_t folderType,
                                   std::string dataFolderPath, bool isFile, bool canSelectContent,
                                   bool canShowSubFolders)
    : SelectableItem(std::move(name)),
      fFile_(isFile),
      fSelectableContent_(canSelectContent),
      fShowSubFolders_(canShowSubFolders),
      folderType_(folderType),
      packageName_(packageName && !packageName->empty() ? std::move(packageName) : std::nullopt),
      dataFolderPath_(std::move(dataFolderPath)) {}

ArchivableFolder::ArchivableFolder(KeyedUnarchiver& coder)
    : SelectableItem(coder),
      fExists_(coder.decodeBoolForKey("fExists")),
      fSelectableContent_(coder.decodeBoolForKey("fSelectableContent")),
      folderType_(coder.decodeInt32ForKey("folderType")),
      packageName_(coder.decodeStringForKey("packageName")),
      dataFolderPath_(coder.decodeStringForKey("dataFolderPath").value_or("")) {
    for (const ArchiveValue& element : coder.decodeArrayForKey("folderContents").value_or(ArchiveValue::Array{})) {
        if (auto item = element.object<SelectableItem>()) {
            contentItems_.push_back(std::move(item));
        } else if (const std::string* path = element.asString()) {
            contentPaths_.push_back(*path);
        }
    }
}

std::shared_ptr<ArchivableFolder> ArchivableFolder::scanned(std::string name, std::optional<std::string> packageName,
                                                            std::int32_t folderType, std::string dataFolderPath,
                                                            bool isFile, bool canSelectContent,
                                                            bool canShowSubFolders) {
    Supervisor::shared().notifyProgress(std::nullopt, Strings::format("PROCESSING_ARCHIVABLE_FOLDER", name));
    auto folder =
        std::make_shared<ArchivableFolder>(std::move(name), std::move(packageName), folderType,
                                           std::move(dataFolderPath), isFile, canSelectContent, canShowSubFolders);
    folder->refreshStatus();
    folder->processDefaultsForBackup(true);
    SH_LOG("<{}> object created...", folder->name());
    return folder;
}

std::shared_ptr<Codable> ArchivableFolder::initWithCoder(KeyedUnarchiver& coder) {
    return std::make_shared<ArchivableFolder>(coder);
}

void ArchivableFolder::encodeWithCoder(KeyedArchiver& coder) const {
    SelectableItem::encodeWithCoder(coder);
    coder.encodeObject(packageName_, "packageName");
    coder.encodeObject(dataFolderPath_, "dataFolderPath");
    coder.encodeBool(fExists_, "fExists");
    coder.encodeBool(fSelectableContent_, "fSelectableContent");
    coder.encodeInt32(folderType_, "folderType");
    ArchiveValue::Array contents;
    for (const auto& item : contentItems_) {
        if (!fSelectableContent_ || item->isSelected()) contents.emplace_back(item);
    }
    for (const std::string& path : contentPaths_) contents.emplace_back(path);
    coder.encodeObject(ArchiveValue::mutableArray(std::move(contents)), "folderContents");
}

bool ArchivableFolder::isSelected() const {
    if (!fExists_) return false;
    return fSelectableContent_ ? hasSelectedContent() : SelectableItem::isSelected();
}

bool ArchivableFolder::hasSelectedContent() const {
    return std::any_of(contentItems_.begin(), contentItems_.end(), [](const auto& item) { return item->isSelected(); });
}

double ArchivableFolder::selectedItemsSize() const {
    return fSelectableContent_ ? sumOfSizes(contentItems_, true) : size();
}

std::string ArchivableFolder::archiveName() const { return ArchivableFolderTable::archiveName(folderType_); }

void ArchivableFolder::processDefaultsForBackup(bool backup) {
    const Supervisor& supervisor = Supervisor::shared();
    if (const auto key = ArchivableFolderTable::defaultKey(folderType_)) {
        const std::string sideKey = *key + sideSuffix(backup);
        if (!supervisor.lowLevelKeyExists(sideKey)) return;
        const auto chosen = supervisor.lowLevelGetArrayPreferencesDataForKey(sideKey).value_or(PlistValue::Array{});
        for (const auto& item : contentItems_) {
            item->setSelected(std::find(chosen.begin(), chosen.end(), PlistValue(item->name())) != chosen.end());
        }
        return;
    }
    if (!fFile_ && fSelectableContent_) return;
    DefaultList& types = defaultTypes().side(backup);
    SelectableItem::setSelected(types.names() ? types.contains(std::to_string(folderType_)) : backup);
}

bool ArchivableFolder::saveContentSelectedAsDefault(bool backup) const {
    const auto key = ArchivableFolderTable::defaultKey(folderType_);
    if (!key || !fSelectableContent_) return false;
    PlistValue::Array names;
    for (const auto& item : contentItems_) {
        if (item->isSelected()) names.emplace_back(item->name());
    }
    const bool all = names.size() == contentItems_.size();
    Supervisor::shared().lowLevelStorePreferencesData(all ? PlistValue() : PlistValue(std::move(names)),
                                                      *key + sideSuffix(backup));
    return true;
}

std::shared_ptr<ArchivableFolder> ArchivableFolder::duplicateForBackup() const {
    auto copy = std::make_shared<ArchivableFolder>(*this);
    if (fSelectableContent_) {
        std::erase_if(copy->contentItems_, [](const auto& item) { return !item->isSelected(); });
    }
    return copy;
}

void ArchivableFolder::resetDefaultLists() { defaultTypes().reset(); }

double ArchivableFolder::totalSize() const { return fSelectableContent_ ? sumOfSizes(contentItems_, false) : size(); }

}  // namespace stowhaven
