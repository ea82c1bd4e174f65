#include "flows/SelectionRow.h"

#include <fmt/format.h>

namespace stowhaven {

std::optional<std::string> ApplicationRow::defaultEntry() const {
    const auto& identifier = application_->bundleIdentifier();
    if (!identifier) return std::nullopt;
    return fmt::format("{},{:d},{:d}", *identifier, application_->hasDocumentsDir(), application_->hasLibraryDir());
}

void FolderRow::setSelected(bool selected) {
    if (!folder_->canSelectContent()) {
        folder_->setSelected(selected);
        return;
    }
    for (const auto& item : folder_->contentItems()) item->setSelected(selected);
}

std::optional<std::string> FolderRow::defaultEntry() const {
    if (folder_->canSelectContent()) return std::nullopt;
    return std::to_string(folder_->folderType());
}

std::string StockDataRow::key() const { return std::string(stockDataSetName(set_)); }

}  // namespace stowhaven
