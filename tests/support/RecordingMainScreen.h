#pragma once

#include "flows/MainScreen.h"

#include <optional>
#include <string>
#include <vector>

namespace stowhaven::test {

// Keeps what the main screen was told to show, and picks from its lists as told.
class RecordingMainScreen final : public MainScreen {
public:
    void showMode(bool backup) override { backupMode = backup; }
    void setJobButtonsEnabled(bool enabled) override { jobButtonsEnabled = enabled; }
    void showLabels(const Labels& shown) override { labels = shown; }
    void showStorage(const std::string& engineName) override { storage = engineName; }
    void showWorking(bool isWorking) override {
        working = isWorking;
        if (isWorking) ++jobsStarted;
    }
    void showProgressText(const std::string& text) override { progressTexts.push_back(text); }
    void showProgressFraction(double shown) override { fraction = shown; }
    void showNetworkActivity(bool active) override { networkActivity = active; }
    void chooseFrom(const std::vector<std::string>& options, Choice choice) override {
        offered = options;
        choice(pick);
    }
    void open(const std::vector<FlowScreen>& screens) override { opened.push_back(screens); }

    bool backupMode = true;
    bool jobButtonsEnabled = true;
    Labels labels;
    std::string storage;
    bool working = false;
    int jobsStarted = 0;
    std::vector<std::string> progressTexts;
    double fraction = 0;
    bool networkActivity = false;
    std::vector<std::string> offered;
    std::optional<std::size_t> pick;
    std::vector<std::vector<FlowScreen>> opened;
};

}  // namespace stowhaven::test
