// Choosing what a job covers with the real program on a sandbox device: the scripted
// command, whose saved default the next backup follows, and the screen of the main menu on
// a terminal of 80 columns.

#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "support/SandboxDevice.h"
#include "support/TerminalProgram.h"
#include "support/TerminalWidth.h"

#include <gtest/gtest.h>

#include <string>

namespace stowhaven {
namespace {

constexpr const char* kDock = "net.tinkerlane.fiveicondock";
constexpr const char* kBadges = "net.tinkerlane.quietbadges";

bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

class SelectProgramTest : public ::testing::Test {
protected:
    SelectProgramTest() { EXPECT_TRUE(device_.turnOn({"AutoScanPkgEnabled"})); }

    // The whole archive of the one session the storage holds.
    std::string onlySessionOnStorage() const {
        const std::string storage = device_.path("/var/mobile/Library/Preferences/Stowhaven");
        auto names = FileManager::contentsOfDirectory(storage).value_or(std::vector<std::string>{});
        std::erase_if(names, [](const std::string& name) { return !name.ends_with(".stowhvn"); });
        EXPECT_EQ(names.size(), 1u);
        if (names.empty()) return "";
        const auto inspected = device_.run("inspect --json " + ShellQuote::path(storage + "/" + names.front()));
        EXPECT_EQ(inspected.status, 0) << inspected.errors;
        return inspected.output;
    }

    const test::SandboxDevice device_{"minimal"};
};

TEST_F(SelectProgramTest, APackageDeselectedAndSavedAsDefaultIsNotInTheNextBackup) {
    const auto unsaved = device_.run(std::string("select packages --remove ") + kBadges);
    ASSERT_EQ(unsaved.status, 0) << unsaved.errors;
    EXPECT_TRUE(contains(unsaved.output, "Not saved; add --save-default")) << unsaved.output;

    const auto saved = device_.run(std::string("select packages --remove ") + kDock + " --save-default");
    ASSERT_EQ(saved.status, 0) << saved.errors;
    EXPECT_TRUE(contains(saved.output, std::string("[ ] Five Icon Dock [") + kDock + "]")) << saved.output;
    EXPECT_TRUE(contains(saved.output, std::string("[x] ") + kBadges)) << "the unsaved run changed nothing\n"
                                                                       << saved.output;

    const auto backup = device_.run("backup --yes");
    ASSERT_EQ(backup.status, 0) << backup.errors;
    const std::string session = onlySessionOnStorage();
    EXPECT_TRUE(contains(session, kBadges)) << session;
    EXPECT_FALSE(contains(session, kDock)) << session;
}

// Names come from the user: an unknown one, however it is made, changes and saves nothing.
TEST_F(SelectProgramTest, AnUnknownItemIsRefusedAndNothingIsSaved) {
    const std::string hostile = ShellQuote::quoted("x; touch " + device_.path("/owned") + " #");
    const auto refused =
        device_.run(std::string("select packages --none --add ") + kDock + " " + hostile + " --save-default");
    EXPECT_EQ(refused.status, 2);
    EXPECT_TRUE(contains(refused.errors, "no item named")) << refused.errors;
    EXPECT_FALSE(FileManager::fileExists(device_.path("/owned")));

    const auto after = device_.run("select packages --json");
    ASSERT_EQ(after.status, 0) << after.errors;
    EXPECT_FALSE(contains(after.output, "\"selected\": false")) << after.output;
    EXPECT_EQ(device_.run("select nothing").status, 2);
}

// From the main menu: the package list, a toggle by number and a save, all within 80 columns.
TEST_F(SelectProgramTest, TheMainMenusChoiceShowsThePackagesToSwitchAndSaveWithinTheTerminal) {
    test::TerminalProgram terminal("--root " + ShellQuote::path(device_.root()));
    ASSERT_TRUE(terminal.waitFor("3) Choose what to back up")) << terminal.screen();
    terminal.type("3\n");
    ASSERT_TRUE(terminal.waitFor("packages to back up")) << terminal.screen();
    ASSERT_TRUE(terminal.waitFor("> ", 2)) << terminal.screen();
    const std::string before = terminal.screen();
    const auto at = before.rfind(") [x] Five Icon Dock");
    ASSERT_NE(at, std::string::npos) << before;
    const auto space = before.rfind(' ', at);
    const std::string number = before.substr(space + 1, at - space - 1);
    terminal.type(number + "\n");
    ASSERT_TRUE(terminal.waitFor(number + ") [ ] Five Icon Dock")) << terminal.screen();
    terminal.type("s\n");
    ASSERT_TRUE(terminal.waitFor("Saved as the default of the next backup.")) << terminal.screen();
    // The files' screen follows; an empty line leaves each screen.
    terminal.type("\n");
    ASSERT_TRUE(terminal.waitFor("preferences to back up")) << terminal.screen();
    terminal.type("\n");
    ASSERT_TRUE(terminal.waitFor("0) Quit", 2)) << terminal.screen();
    terminal.type("0\n");
    EXPECT_EQ(terminal.finish(), 0) << terminal.screen();
    EXPECT_EQ(test::linesWiderThan(terminal.screen(), 80), "") << terminal.screen();

    const auto saved = device_.run("select packages");
    EXPECT_TRUE(contains(saved.output, std::string("[ ] Five Icon Dock [") + kDock + "]")) << saved.output;
}

}  // namespace
}  // namespace stowhaven
