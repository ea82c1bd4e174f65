#pragma once

#include "flows/SelectionRow.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

using SelectionRows = std::vector<std::shared_ptr<SelectionRow>>;

// The lines of one list and what every selection screen does to all of them at once. The
// selection stays in the items the lines stand for.
class SelectionList {
public:
    SelectionList() = default;
    explicit SelectionList(SelectionRows rows) : rows_(std::move(rows)) {}

    const SelectionRows& rows() const { return rows_; }
    // For a screen that orders its lines.
    SelectionRows& rows() { return rows_; }

    void selectAll() { setAll(true); }
    void selectNone() { setAll(false); }
    void invertSelection();
    // The line that KEY names (SelectionRow::key()), null when none does.
    std::shared_ptr<SelectionRow> rowNamed(std::string_view key) const;
    // The line that KEY names takes that state; false when no line has that name.
    bool setSelected(std::string_view key, bool selected);
    static void switchState(SelectionRow& row) { row.setSelected(!row.isSelected()); }

    // "3 of 10 selected".
    std::string selectedCountStatus() const;
    // "Total selected: 12.5Mb", in "Gb" from 1024 megabytes; lines without a size count nothing.
    std::string totalSelectedSize() const;

private:
    void setAll(bool selected);

    SelectionRows rows_;
};

}  // namespace stowhaven
