#pragma once

#include "flows/HistoryScreen.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// What a history view was told last, for the terminal to draw and the commands to print.
class HistoryScreenState final : public HistoryScreen {
public:
    void showRows(const std::vector<std::string>& shown, std::optional<std::size_t> chosenRow) override {
        rows = shown;
        chosen = chosenRow;
        details.clear();
    }
    void showDetails(const std::vector<std::string>& lines) override { details = lines; }
    void close() override { closed = true; }

    std::vector<std::string> rows;
    std::optional<std::size_t> chosen;
    std::vector<std::string> details;
    bool closed = false;
};

}  // namespace stowhaven
