#include "flows/SelectableItemViewController.h"

#include "core/ProcessFlags.h"
#include "flows/SelectionContent.h"

namespace stowhaven {

namespace {

SelectionRows itemRows(const ArchivableFolder& folder) {
    SelectionRows rows;
    for (const auto& item : folder.contentItems()) {
        rows.push_back(std::make_shared<ItemRow>(item, item->name(), item->displayName()));
    }
    return rows;
}

}  // namespace

SelectableItemViewController::SelectableItemViewController(std::shared_ptr<ArchivableFolder> folder)
    : folder_(std::move(folder)), backupMode_(gIsBackupMode), list_(itemRows(*folder_)) {}

std::shared_ptr<ArchivableFolder> SelectableItemViewController::folderNamed(std::string_view name, bool backup) {
    for (const auto& row : selectionRows(SelectionKind::Folders, backup)) {
        const auto& folder = static_cast<const FolderRow&>(*row).folder();
        if (row->key() == name && folder->canSelectContent()) return folder;
    }
    return nullptr;
}

}  // namespace stowhaven
