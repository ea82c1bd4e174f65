#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// What the history views show of their controllers, besides alerts (AlertPresenter) and the
// waiting indicator (ProgressDisplay): a list with one row chosen, the details of that row,
// and the end of the view. Called on the main queue; the controllers never know what draws
// it: widgets, a terminal, or a test's recording.
class HistoryScreen {
public:
    virtual ~HistoryScreen() = default;

    virtual void showRows(const std::vector<std::string>& rows, std::optional<std::size_t> chosen) = 0;
    // The chosen row's details, a line each: a session's summary, a device backup's dates.
    virtual void showDetails(const std::vector<std::string>& lines) = 0;
    // The view closes itself: nothing is left to show.
    virtual void close() = 0;
};

}  // namespace stowhaven
