#pragma once

#include "cli/PresetAnswers.h"

#include <optional>
#include <ostream>
#include <string>

namespace stowhaven {

class TerminalFlow;

// What the command line says about a backup or a restore: the answers to its questions, and
// where its key comes from (a file, or the variable STOWHAVEN_KEY; never an argument).
struct JobRequest {
    PresetAnswers answers;
    std::optional<std::string> keyFile;

    // The answers with the key; nothing when a key file was named but holds no key, which
    // is said on ERRORS.
    std::optional<PresetAnswers> presets(std::ostream& errors) const;
};

// The exit status of a command whose flow started no job, with the reason in one sentence
// on ERRORS: 2 for a question nobody answered or a key refused, 130 when the user left, 1
// otherwise (a restriction, nothing to do...).
int statusWithoutJob(TerminalFlow& flow, const std::string& job, std::ostream& errors);

}  // namespace stowhaven
