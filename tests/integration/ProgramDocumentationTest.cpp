// The manual page and the bash completion keep up with the program's commands.

#include "platform/FileManager.h"
#include "support/ProgramRun.h"
#include "support/SandboxDevice.h"
#include "support/TextLines.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace stowhaven {
namespace {

// The commands that "stowhaven --help" lists under "Subcommands:".
std::vector<std::string> programCommands() {
    std::vector<std::string> commands;
    bool listing = false;
    for (const std::string& line : test::linesOf(test::runProgram("--help").output)) {
        if (line.starts_with("Subcommands:")) {
            listing = true;
        } else if (listing && line.starts_with("  ")) {
            commands.push_back(line.substr(2, line.find(' ', 2) - 2));
        }
    }
    return commands;
}

TEST(ProgramDocumentationTest, TheManualAndTheCompletionNameEveryCommand) {
    const auto manual = FileManager::contentsOfFile(std::string(STOWHAVEN_BINARY_DIR) + "/stowhaven.1");
    const auto completion =
        FileManager::contentsOfFile(std::string(STOWHAVEN_SOURCE_DIR) + "/resources/completion/stowhaven.bash");
    ASSERT_TRUE(manual && completion);
    EXPECT_EQ(manual->find("@PROJECT_VERSION@"), std::string::npos);
    const auto commands = programCommands();
    ASSERT_GE(commands.size(), 10U);
    for (const std::string& command : commands) {
        EXPECT_NE(manual->find(".B " + command + " "), std::string::npos) << command;
        EXPECT_NE(completion->find(" " + command), std::string::npos) << command;
    }
    // Completing the first word offers the commands.
    const std::string offered = test::runCommand("bash -c 'source " + std::string(STOWHAVEN_SOURCE_DIR) +
                                                 "/resources/completion/stowhaven.bash; COMP_WORDS=(stowhaven re); "
                                                 "COMP_CWORD=1; _stowhaven; echo \"${COMPREPLY[*]}\"'");
    EXPECT_EQ(offered, "restore\n");
}

}  // namespace
}  // namespace stowhaven
