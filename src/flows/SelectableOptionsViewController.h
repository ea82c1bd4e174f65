#pragma once

#include "flows/SelectionContent.h"
#include "flows/SelectionList.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

// The logic of a selection screen, apart from anything that draws it: the lists it switches
// between, the list on show and its search, the bulk choices, the sorts of the applications,
// and the default of the next time. It works in the direction the user works in when it is
// made (gIsBackupMode); the selection stays in the items. Used on the main queue.
class SelectableOptionsViewController {
public:
    // The three sorts of the applications, in the order of their segments.
    enum SortSegment { kSortByName = 0, kSortBySize = 1, kSortByInstallDate = 2 };

    // The lists SEGMENTS, the first one on show.
    explicit SelectableOptionsViewController(std::vector<SelectionKind> segments);

    bool backupMode() const { return backupMode_; }
    const std::vector<SelectionKind>& segments() const { return segments_; }
    SelectionKind tableContentType() const { return segments_[segment_]; }
    // Loads the list of that segment, with no search running.
    void changeTableContent(std::size_t segment);

    // The whole list, and the lines on show: those the search found while one runs.
    const SelectionRows& data() const { return list_.rows(); }
    const SelectionRows& rows() const { return filteredData_ ? *filteredData_ : list_.rows(); }
    // The whole list, for what every selection screen does.
    SelectionList& list() { return list_; }
    // Packages, applications and preference files can be searched; other lists stay whole.
    bool fCanDisplaySearchBar() const;
    // Trimmed of blanks; a blank text, or a list without a search, shows the whole list.
    void search(std::string_view text);
    const std::optional<SelectionRows>& filteredData() const { return filteredData_; }

    // Each acts on the whole list, searched or not.
    void selectAll() { list_.selectAll(); }
    void selectNone() { list_.selectNone(); }
    void invertSelection() { list_.invertSelection(); }
    // Packages only: each one selected when made for the device's firmware. False on
    // other lists, which are left as they are.
    bool selectFWCompatible();
    // The line at INDEX of those on show changes its state.
    void switchState(std::size_t index);
    // The line of the whole list that KEY names (SelectionRow::key()), null when none does.
    std::shared_ptr<SelectionRow> rowNamed(std::string_view key) const { return list_.rowNamed(key); }
    // The line that KEY names takes that state; false when no line has that name.
    bool setSelected(std::string_view key, bool selected) { return list_.setSelected(key, selected); }
    // "3 of 10 selected", of the whole list.
    std::string selectedCountStatus() const { return list_.selectedCountStatus(); }

    void saveAsDefault() const { saveSelectionAsDefault(tableContentType(), list_.rows()); }

    // Applications only: a segment sorts ascending on its first use and flips its order on
    // each next one; the other two start again.
    void sortBy(SortSegment segment);
    // Applications only: "Total selected: 12.5Mb", in "Gb" from 1024 megabytes; nothing
    // on other lists.
    std::optional<std::string> totalSelectedSize() const;

private:
    void applySearch();

    std::vector<SelectionKind> segments_;
    std::size_t segment_ = 0;
    bool backupMode_;
    SelectionList list_;
    std::optional<SelectionRows> filteredData_;
    std::string searchText_;
    bool fNameAscending_ = false;
    bool fSizeAscending_ = false;
    bool fDateAscending_ = false;
};

}  // namespace stowhaven
