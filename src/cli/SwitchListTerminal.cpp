#include "cli/SwitchListTerminal.h"

#include "cli/MenuNumber.h"
#include "cli/TerminalFlow.h"
#include "cli/TextWrap.h"
#include "core/Supervisor.h"
#include "flows/InAppSettingsViewController.h"
#include "platform/Strings.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <vector>

namespace stowhaven {

namespace {

std::string rowText(const InAppSettingsViewController& switches, const SwitchRow& row) {
    switch (row.kind) {
        case SwitchRow::Kind::Switch:
            return fmt::format("[{}] {}", switches.isOn(row) ? 'x' : ' ', row.title);
        case SwitchRow::Kind::Slider:
            return fmt::format("{}: {}", row.title, InAppSettingsViewController::levelText(switches.batteryLevel()));
        case SwitchRow::Kind::Reset:
            return row.title;
    }
    return row.title;
}

// The rows in the order they are numbered, each with its section's title.
std::vector<std::pair<const SwitchSection*, const SwitchRow*>> numberedRows() {
    std::vector<std::pair<const SwitchSection*, const SwitchRow*>> rows;
    for (const SwitchSection& section : switchSections()) {
        for (const SwitchRow& row : section.rows) rows.emplace_back(&section, &row);
    }
    return rows;
}

void drawList(TerminalFlow& flow, const InAppSettingsViewController& switches) {
    std::ostream& out = flow.out();
    std::size_t number = 0;
    fmt::print(out, "\n{}\n", wrapped("Options", flow.width()));
    for (const SwitchSection& section : switchSections()) {
        const std::string title = section.rows.empty()
                                      ? fmt::format("{} - {}", section.title, Supervisor::shared().version())
                                      : section.title;
        fmt::print(out, "{}\n", wrapped(title, flow.width()));
        for (const SwitchRow& row : section.rows) {
            fmt::print(out, "{}\n",
                       wrappedBehind(fmt::format("  {:>2}) ", ++number), rowText(switches, row), flow.width()));
        }
    }
    fmt::print(out, "{}\n", wrappedBehind("   0) ", "Back", flow.width()));
}

void askBatteryLevel(TerminalFlow& flow, InAppSettingsViewController& switches) {
    const auto typed = flow.prompt()->readText("Minimum battery level in percent (0 to 100): ");
    if (!typed) return;
    const auto percent = menuNumber(*typed, 100);
    if (!percent) {
        fmt::print(flow.out(), "{}\n",
                   wrapped("The level is a whole number from 0 to 100; it stays as it was.", flow.width()));
        return;
    }
    switches.setBatteryLevel(static_cast<double>(*percent) / 100.0);
}

bool askReset(TerminalFlow& flow, InAppSettingsViewController& switches, const SwitchSection& section,
              const SwitchRow& row) {
    const Alert question{.title = section.title,
                         .message = "The program resets and ends; start it again afterwards. Go on?",
                         .buttons = {Strings::localized("NO_BUTTON"), Strings::localized("YES_BUTTON")}};
    const TerminalPrompt::Result result = flow.prompt()->ask(question);
    if (result.kind != TerminalPrompt::Result::Kind::Answered || result.answer.buttonIndex != 1) return false;
    switches.activateReset(row);
    return true;
}

}  // namespace

bool showSwitchList(TerminalFlow& flow, InAppSettingsViewController& switches) {
    const auto rows = numberedRows();
    while (true) {
        drawList(flow, switches);
        const auto typed = flow.prompt()->readText("> ");
        if (!typed) return false;
        const auto number = menuNumber(*typed, rows.size());
        if (!number) {
            fmt::print(flow.out(), "Type a number from 0 to {}.\n", rows.size());
            continue;
        }
        if (*number == 0) return false;
        const auto [section, row] = rows[*number - 1];
        switch (row->kind) {
            case SwitchRow::Kind::Switch:
                switches.setOn(*row, !switches.isOn(*row));
                break;
            case SwitchRow::Kind::Slider:
                askBatteryLevel(flow, switches);
                break;
            case SwitchRow::Kind::Reset:
                if (askReset(flow, switches, *section, *row)) return true;
                break;
        }
    }
}

}  // namespace stowhaven
