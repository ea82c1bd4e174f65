#pragma once

#include "items/SelectableItem.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// A known place of the device that belongs to a tweak or a feature, a folder or a single
// file, which a backup can carry. Its contents are items the user ticks, or, for a place
// without selectable content, the paths it holds.
//
// Archived with the item's keys and "packageName", "dataFolderPath", "fExists",
// "fSelectableContent", "folderType", "folderContents" (only the selected items of a place
// with selectable content).
class ArchivableFolder : public SelectableItem {
public:
    // Types whose places have files of the tweak elsewhere, which their archives carry too.
    static constexpr std::int32_t kCopicType = 0;
    static constexpr std::int32_t kKeyboardShortcutsType = 3;
    static constexpr std::int32_t kSBSettingsType = 15;
    static constexpr std::int32_t kITunesRingtonesType = 26;
    static constexpr const char* kSBSettingsNote = "/var/mobile/Library/SBSettings/note.txt";
    static constexpr const char* kITunesRingtonesList = "/var/mobile/Media/iTunes_Control/iTunes/Ringtones.plist";
    // The place with the fields given, as yet unlooked-at.
    ArchivableFolder(std::string name, std::optional<std::string> packageName, std::int32_t folderType,
                     std::string dataFolderPath, bool isFile, bool canSelectContent, bool canShowSubFolders);
    // The place as it stands on the device: looked at, and selected as the backup default says.
    static std::shared_ptr<ArchivableFolder> scanned(std::string name, std::optional<std::string> packageName,
                                                     std::int32_t folderType, std::string dataFolderPath, bool isFile,
                                                     bool canSelectContent, bool canShowSubFolders);
    // The archived fields.
    explicit ArchivableFolder(KeyedUnarchiver& coder);
    static std::shared_ptr<Codable> initWithCoder(KeyedUnarchiver& coder);

    std::vector<std::string> classChain() const override { return {"ArchivableFolder", "SelectableItem", "NSObject"}; }
    void encodeWithCoder(KeyedArchiver& coder) const override;

    std::int32_t folderType() const { return folderType_; }
    const std::optional<std::string>& packageName() const { return packageName_; }
    const std::string& dataFolderPath() const { return dataFolderPath_; }
    bool exists() const { return fExists_; }
    void setExists(bool exists) { fExists_ = exists; }
    bool isFile() const { return fFile_; }
    bool canSelectContent() const { return fSelectableContent_; }
    bool canShowSubFolders() const { return fShowSubFolders_; }
    bool isAccountable() const { return fAccountable_; }
    void setAccountable(bool accountable) { fAccountable_ = accountable; }

    // The items of a place with selectable content.
    const std::vector<std::shared_ptr<SelectableItem>>& contentItems() const { return contentItems_; }
    void setContentItems(std::vector<std::shared_ptr<SelectableItem>> items) { contentItems_ = std::move(items); }
    // The paths that a place without selectable content holds.
    const std::vector<std::string>& contentPaths() const { return contentPaths_; }
    void setContentPaths(std::vector<std::string> paths) { contentPaths_ = std::move(paths); }

    // False where the place doesn't exist; with selectable content, whether an item is.
    bool isSelected() const override;
    bool hasSelectedContent() const;
    // The size, or with selectable content the sum of the selected items.
    double selectedItemsSize() const;
    // The size, or with selectable content the sum of all items.
    double totalSize() const;
    // A package owns it.
    bool isInstallable() const { return packageName_.has_value(); }

    // What its type is archived as, and the icon of the type.
    std::string archiveName() const;
    const std::string& image() const { return image_; }

    // Looks at the place on the device: whether it exists (its package installed, or the
    // path there as the kind it should be), what it holds and how big that is.
    void refreshStatus();
    // Selects what the default of that side chooses.
    void processDefaultsForBackup(bool backup);
    // Keeps the names of the selected items as the default of that side, or none when every
    // item is selected, which then stands for all, those found later too. Only a place with
    // selectable content and a default key of its type has such a default; false for others.
    bool saveContentSelectedAsDefault(bool backup) const;
    // A copy for a session: with selectable content, only the selected items go along.
    std::shared_ptr<ArchivableFolder> duplicateForBackup() const;

    // Reads the two default lists of types again from the settings.
    static void resetDefaultLists();

private:
    // The list of what the place holds, for a folder or a file; none when it can't be read.
    std::optional<std::vector<std::string>> listContents();
    void buildSelectableContents(const std::vector<std::string>& names);
    void buildWebclipsData();
    void buildSHSHBlobs();
    // Where an entry below the place lies, the device root in front.
    std::string hostPathOf(const std::string& entry) const;

    bool fExists_ = false;
    bool fFile_ = false;
    bool fSelectableContent_ = false;
    bool fAccountable_ = false;
    bool fShowSubFolders_ = false;
    std::int32_t folderType_ = 0;
    std::optional<std::string> packageName_;
    std::string dataFolderPath_;
    std::vector<std::shared_ptr<SelectableItem>> contentItems_;
    std::vector<std::string> contentPaths_;
    std::string image_;
};

}  // namespace stowhaven
