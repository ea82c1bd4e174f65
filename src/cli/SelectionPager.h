#pragma once

#include "flows/SelectionList.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace stowhaven {

class TerminalFlow;

// A selection list on the terminal, a page at a time, under the command line that every
// selection screen shares: a all, n none, i invert, numbers or ranges (2 5-7) switch lines,
// '>' and '<' turn pages, s saves as default, ? shows the help, q or an empty line goes
// back. A screen adds its own commands and what stands above its list.
class SelectionPager {
public:
    virtual ~SelectionPager() = default;
    SelectionPager(const SelectionPager&) = delete;
    SelectionPager& operator=(const SelectionPager&) = delete;

    // Until the user goes back.
    void run();

protected:
    // HELP is told first and on '?'.
    SelectionPager(TerminalFlow& flow, std::string help) : flow_(flow), help_(std::move(help)) {}

    // What stands above the list.
    virtual void drawHeading() = 0;
    // The lines on show, by number from 1.
    virtual const SelectionRows& shownRows() const = 0;
    // The whole list, which a, n and i act on.
    virtual SelectionList& list() = 0;
    // Keeps the choice as the default of the next time; answers what to tell the user.
    virtual std::string saveAsDefault() = 0;
    // A command of the screen's own, its first character and the rest trimmed; false when
    // it is none.
    virtual bool performOwn(char /*command*/, const std::string& /*argument*/) { return false; }
    // After a change of the selection.
    virtual void selectionChanged() {}

    void say(std::string_view text);
    // The number of a line on show, from 1.
    std::optional<std::size_t> number(std::string_view text) const;
    void showFirstPage() { page_ = 0; }

    TerminalFlow& flow_;

private:
    std::size_t pageCount() const;
    void draw();
    void perform(const std::string& command);
    std::optional<std::vector<std::size_t>> itemNumbers(const std::string& text) const;
    void switchItems(const std::string& command);
    void changed(void (SelectionList::*change)());

    std::string help_;
    std::size_t page_ = 0;
};

}  // namespace stowhaven
