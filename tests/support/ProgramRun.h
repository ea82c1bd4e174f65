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

// Turns on the scans of packages, stock data and other options on the device at ROOT, which
// a backup of everything and its restore need; false when the program refused one.
bool turnOnScans(const std::string& root);

}  // namespace stowhaven::test
