#include "cli/JobRequest.h"

#include "cli/KeyFile.h"
#include "cli/TerminalFlow.h"
#include "platform/Environment.h"
#include "platform/Strings.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

namespace stowhaven {

std::optional<PresetAnswers> JobRequest::presets(std::ostream& errors) const {
    PresetAnswers withKey = answers;
    if (keyFile) {
        withKey.key = keyFromFile(*keyFile);
        if (!withKey.key) {
            fmt::print(errors, "stowhaven: no key in <{}>\n", *keyFile);
            return std::nullopt;
        }
    } else if (const auto key = environmentVariable("STOWHAVEN_KEY"); key && !key->empty()) {
        withKey.key = key;
    }
    return withKey;
}

int statusWithoutJob(TerminalFlow& flow, const std::string& job, std::ostream& errors) {
    if (const auto& question = flow.alerts().unanswered()) {
        fmt::print(errors,
                   "stowhaven: the {} waits for an answer to \"{}\" and there is no terminal to ask on: add {}\n", job,
                   question->title, PresetAnswers::optionsAnswering(*question));
        return 2;
    }
    if (flow.userLeft()) return 130;
    const auto& shown = flow.alerts().shown();
    if (shown.empty()) {
        fmt::print(errors, "stowhaven: no {} ran\n", job);
        return 1;
    }
    const std::string& reason = shown.back().message;
    fmt::print(errors, "stowhaven: no {} ran: {}\n", job, reason);
    const bool keyRefused = reason == Strings::localized("INVALID_ENCRYPTION_KEY_MESSAGE") ||
                            reason == Strings::localized("MISMATCH_ENCRYPTION_KEY_MESSAGE");
    return keyRefused ? 2 : 1;
}

}  // namespace stowhaven
