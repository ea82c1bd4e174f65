#pragma once

#include <string>

namespace stowhaven::test {

struct ProgramOutcome {
    int status;
    std::string output;
    std::string errors;
};

// Runs the built program with ARGUMENTS, a command-line text, after ENVIRONMENT (such as
// "STOWHAVEN_ROOT=/x "), and answers its exit status and what it wrote to each stream.
ProgramOutcome runProgram(const std::string& arguments, const std::string& environment = "");

}  // namespace stowhaven::test
