#include "items/PreferenceFile.h"

#include "archive/KeyedArchiver.h"
#include "archive/KeyedUnarchiver.h"
#include "core/FileSizes.h"
#include "items/SelectionDefaults.h"
#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"

#include <fmt/format.h>

namespace stowhaven {

namespace {

SelectionDefaults& defaultLists() {
    static SelectionDefaults lists("DefaultPreferencesFiles_Backup", "DefaultPreferencesFiles_Restore");
    return lists;
}

}  // namespace

PreferenceFile::PreferenceFile(std::string name, ArchiveValue data)
    : SelectableItem(std::move(name)), preferencePlistData_(std::move(data)) {
    // A preference file is one file: its name is never measured as a folder.
    const auto attributes = FileManager::attributesOfItem(DeviceRoot::path(this->name()));
    const bool isFile = attributes && attributes->type == FileType::Regular;
    setSize(isFile ? static_cast<double>(attributes->size) / FileSizes::kBytesPerMegabyte : 0);
    selectStateForOperation(true);
}

PreferenceFile::PreferenceFile(KeyedUnarchiver& coder)
    : SelectableItem(coder), preferencePlistData_(coder.decodeObjectForKey("preferencePlistData")) {
    selectStateForOperation(false);
}

std::shared_ptr<Codable> PreferenceFile::initWithCoder(KeyedUnarchiver& coder) {
    return std::make_shared<PreferenceFile>(coder);
}

void PreferenceFile::encodeWithCoder(KeyedArchiver& coder) const {
    SelectableItem::encodeWithCoder(coder);
    coder.encodeObject(preferencePlistData_, "preferencePlistData");
}

void PreferenceFile::selectStateForOperation(bool backup) {
    DefaultList& list = defaultLists().side(backup);
    setSelected(list.names() ? list.contains(name()) : backup);
}

std::string PreferenceFile::displayName() const {
    const std::string& path = name();
    const auto slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string PreferenceFile::description() const {
    const std::string className = classChain().front();
    if (const auto* bytes = preferencePlistData_.asData()) {
        return fmt::format("{{{}}}{}[{:d}] -> {}b", className, name(), isSelected(), bytes->size());
    }
    if (const auto* entries = preferencePlistData_.asDictionary()) {
        return fmt::format("{{{}}}{}[{:d}] -> {} keys", className, name(), isSelected(), entries->size());
    }
    return fmt::format("{{{}}}{}[{:d}] {:.3f}Mb", className, name(), isSelected(), size());
}

void PreferenceFile::resetDefaultLists() { defaultLists().reset(); }

}  // namespace stowhaven
