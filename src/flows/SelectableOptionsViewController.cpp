#include "flows/SelectableOptionsViewController.h"

#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "core/Text.h"

#include <algorithm>

namespace stowhaven {

namespace {

// What a sort compares of two applications.
bool comesBefore(Application& a, Application& b, SelectableOptionsViewController::SortSegment segment) {
    switch (segment) {
        case SelectableOptionsViewController::kSortBySize:
            return a.totalSize() < b.totalSize();
        case SelectableOptionsViewController::kSortByInstallDate: {
            // An application without a date comes first.
            const auto& left = a.installDate();
            const auto& right = b.installDate();
            if (!left || !right) return !left && right;
            return left->timeIntervalSinceReferenceDate() < right->timeIntervalSinceReferenceDate();
        }
        case SelectableOptionsViewController::kSortByName:
            break;
    }
    return a.compare(b) < 0;
}

}  // namespace

SelectableOptionsViewController::SelectableOptionsViewController(std::vector<SelectionKind> segments)
    : segments_(std::move(segments)), backupMode_(gIsBackupMode) {
    changeTableContent(0);
}

void SelectableOptionsViewController::changeTableContent(std::size_t segment) {
    segment_ = std::min(segment, segments_.size() - 1);
    list_ = SelectionList(selectionRows(tableContentType(), backupMode_));
    filteredData_.reset();
    searchText_.clear();
}

bool SelectableOptionsViewController::fCanDisplaySearchBar() const {
    const SelectionKind kind = tableContentType();
    return kind == SelectionKind::Packages || kind == SelectionKind::Applications || kind == SelectionKind::Preferences;
}

void SelectableOptionsViewController::search(std::string_view text) {
    searchText_ = textutil::trimmed(text);
    applySearch();
}

void SelectableOptionsViewController::applySearch() {
    filteredData_.reset();
    if (searchText_.empty() || !fCanDisplaySearchBar()) return;
    SelectionRows found;
    std::copy_if(data().begin(), data().end(), std::back_inserter(found),
                 [&](const auto& row) { return textutil::containsCaseInsensitive(row->title(), searchText_); });
    filteredData_ = std::move(found);
}

bool SelectableOptionsViewController::selectFWCompatible() {
    if (tableContentType() != SelectionKind::Packages) return false;
    const std::string& systemVersion = Supervisor::shared().deviceSystemVersion();
    for (const auto& row : data()) {
        const auto& package = static_cast<const PackageRow&>(*row).package();
        row->setSelected(package->isFirmwareCompatible(systemVersion));
    }
    return true;
}

void SelectableOptionsViewController::switchState(std::size_t index) {
    const SelectionRows& shown = rows();
    if (index < shown.size()) SelectionList::switchState(*shown[index]);
}

void SelectableOptionsViewController::sortBy(SortSegment segment) {
    if (tableContentType() != SelectionKind::Applications) return;
    bool* flags[] = {&fNameAscending_, &fSizeAscending_, &fDateAscending_};
    const bool ascending = !*flags[segment];
    for (bool* flag : flags) *flag = false;
    *flags[segment] = ascending;
    const auto applicationOf = [](const std::shared_ptr<SelectionRow>& row) -> Application& {
        return *static_cast<const ApplicationRow&>(*row).application();
    };
    std::stable_sort(list_.rows().begin(), list_.rows().end(), [&](const auto& a, const auto& b) {
        return ascending ? comesBefore(applicationOf(a), applicationOf(b), segment)
                         : comesBefore(applicationOf(b), applicationOf(a), segment);
    });
    applySearch();
}

std::optional<std::string> SelectableOptionsViewController::totalSelectedSize() const {
    if (tableContentType() != SelectionKind::Applications) return std::nullopt;
    return list_.totalSelectedSize();
}

}  // namespace stowhaven
