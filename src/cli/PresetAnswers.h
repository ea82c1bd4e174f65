#pragma once

#include "core/AlertPresenter.h"

#include <optional>
#include <string>

namespace stowhaven {

// The answers given on the command line to the questions a job may ask, so that a script
// or a scheduled job runs without a terminal.
struct PresetAnswers {
    // Yes to every confirmation, and the defaults where a text is asked.
    bool confirmed = false;
    std::optional<std::string> title;
    std::optional<std::string> description;
    std::optional<std::string> key;
    // Restore only the packages made for the device's firmware.
    bool firmwareCompatibleOnly = false;

    // The answer to the question, or nothing when it has none here.
    std::optional<AlertAnswer> answerFor(const Alert& alert) const;
    // The options that answer the question, for the message when nobody does.
    static std::string optionsAnswering(const Alert& alert);
};

}  // namespace stowhaven
