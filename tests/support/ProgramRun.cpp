#include "support/ProgramRun.h"

#include "platform/ShellQuote.h"
#include "support/TestFolder.h"

#include <sys/wait.h>

#include <cstdio>
#include <fstream>
#include <sstream>

namespace stowhaven::test {

ProgramOutcome runProgram(const std::string& arguments, const std::string& environment) {
    const TestFolder folder;
    const std::string errorsFile = folder / "errors.txt";
    const std::string command =
        environment + STOWHAVEN_PROGRAM + " " + arguments + " 2>" + ShellQuote::path(errorsFile);
    FILE* pipe = popen(command.c_str(), "r");
    std::string output;
    char buffer[4096];
    while (const std::size_t count = fread(buffer, 1, sizeof buffer, pipe)) output.append(buffer, count);
    const int status = pclose(pipe);
    std::ostringstream errors;
    errors << std::ifstream(errorsFile).rdbuf();
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output, errors.str()};
}

}  // namespace stowhaven::test
