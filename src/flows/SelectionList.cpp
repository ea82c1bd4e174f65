#include "flows/SelectionList.h"

#include "core/Text.h"
#include "platform/Strings.h"

#include <fmt/format.h>

#include <algorithm>

namespace stowhaven {

void SelectionList::setAll(bool selected) {
    for (const auto& row : rows_) row->setSelected(selected);
}

void SelectionList::invertSelection() {
    for (const auto& row : rows_) switchState(*row);
}

std::shared_ptr<SelectionRow> SelectionList::rowNamed(std::string_view key) const {
    const auto found = std::find_if(rows_.begin(), rows_.end(), [&](const auto& row) { return row->key() == key; });
    return found == rows_.end() ? nullptr : *found;
}

bool SelectionList::setSelected(std::string_view key, bool selected) {
    const auto row = rowNamed(key);
    if (row) row->setSelected(selected);
    return row != nullptr;
}

std::string SelectionList::selectedCountStatus() const {
    const auto selected = std::count_if(rows_.begin(), rows_.end(), [](const auto& row) { return row->isSelected(); });
    return Strings::format("SELECTED_COUNT_STATUS", selected, rows_.size());
}

std::string SelectionList::totalSelectedSize() const {
    double megabytes = 0;
    for (const auto& row : rows_) {
        if (row->isSelected()) megabytes += std::max(row->size(), 0.0);
    }
    const bool gigabytes = megabytes >= 1024;
    return fmt::format("{}: {}{}b", Strings::localized("TOTAL_BYTES_SELECTED"),
                       textutil::decimalText(gigabytes ? megabytes / 1024 : megabytes), gigabytes ? "G" : "M");
}

}  // namespace stowhaven
