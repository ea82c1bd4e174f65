#pragma once

#include "flows/SelectionList.h"
#include "items/ArchivableFolder.h"

#include <memory>
#include <string_view>

namespace stowhaven {

// The items of one place whose contents are chosen one by one (the themes of a themes
// folder, the blobs, the ringtones...), as the device holds them for a backup or as the
// current session holds them for a restore: the direction the user works in when it is made
// (gIsBackupMode). The selection stays in the items. Used on the main queue.
class SelectableItemViewController {
public:
    explicit SelectableItemViewController(std::shared_ptr<ArchivableFolder> folder);
    // The place of that name in the direction's list of places, when its contents can be
    // chosen; null otherwise.
    static std::shared_ptr<ArchivableFolder> folderNamed(std::string_view name, bool backup);

    const std::shared_ptr<ArchivableFolder>& folder() const { return folder_; }
    bool backupMode() const { return backupMode_; }
    SelectionList& list() { return list_; }
    const SelectionList& list() const { return list_; }

    // Keeps the selected items' names as the default of the direction, none when all are
    // selected; false when the place has no default of its own.
    bool saveAsDefault() const { return folder_->saveContentSelectedAsDefault(backupMode_); }

private:
    std::shared_ptr<ArchivableFolder> folder_;
    bool backupMode_;
    SelectionList list_;
};

}  // namespace stowhaven
