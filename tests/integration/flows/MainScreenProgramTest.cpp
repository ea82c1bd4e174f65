// The main screen on a terminal of 80 columns, as a new user meets it on a sandbox device
// backed up to local storage.

#include "platform/ShellQuote.h"
#include "support/SandboxDevice.h"
#include "support/TerminalProgram.h"
#include "support/TerminalWidth.h"

#include <gtest/gtest.h>

#include <string>

namespace stowhaven {
namespace {

constexpr std::size_t kTerminalWidth = 80;

std::size_t occurrences(const std::string& screen, const std::string& text) {
    std::size_t count = 0;
    for (auto at = screen.find(text); at != std::string::npos; at = screen.find(text, at + 1)) ++count;
    return count;
}

class MainScreenProgramTest : public ::testing::Test {
protected:
    // The main screen shows its menu for the COUNT-th time; the user quits there, and every
    // line the program wrote fits the terminal.
    void quitAtMenu(test::TerminalProgram& terminal, int count = 1) const {
        ASSERT_TRUE(terminal.waitFor("0) Quit", count)) << terminal.screen();
        terminal.type("0\n");
        EXPECT_EQ(terminal.finish(), 0) << terminal.screen();
        EXPECT_EQ(test::linesWiderThan(terminal.screen(), kTerminalWidth), "") << terminal.screen();
    }

    const test::SandboxDevice device_{"minimal"};
    const std::string arguments_ = "--root " + ShellQuote::path(device_.root());
};

// Every scan is off at a first start; the question about it is broken between words.
TEST_F(MainScreenProgramTest, TheFirstStartsTextsAreBrokenBetweenWordsToTheTerminalsWidth) {
    test::TerminalProgram terminal(arguments_);
    ASSERT_TRUE(terminal.waitFor("1) No   2) Yes")) << terminal.screen();
    terminal.type("1\n");
    quitAtMenu(terminal);
}

// The load passes the comparison twice; the user hears of the missing backup once.
TEST_F(MainScreenProgramTest, WithoutABackupYetTheStartSaysSoOnce) {
    ASSERT_TRUE(device_.turnOn({"AutoScanPkgEnabled"}));
    test::TerminalProgram terminal(arguments_);
    quitAtMenu(terminal);
    EXPECT_EQ(occurrences(terminal.screen(), "No previous backup was found."), 1U) << terminal.screen();
}

// On local storage there are this device's backups alone: "Backups on this storage" lists
// them at once. The older one is chosen for the restore, the newer deleted.
TEST_F(MainScreenProgramTest, BackupsOnThisStorageListThisDevicesSessionsToChooseAndDeleteFrom) {
    ASSERT_TRUE(device_.turnOn({"AutoScanPkgEnabled"}));
    ASSERT_EQ(device_.run("backup --yes --title First").status, 0);
    ASSERT_EQ(device_.run("backup --yes --title Second").status, 0);
    test::TerminalProgram terminal(arguments_);
    ASSERT_TRUE(terminal.waitFor("2) Switch to restore")) << terminal.screen();
    terminal.type("2\n");
    ASSERT_TRUE(terminal.waitFor("3) Backups on this storage")) << terminal.screen();
    terminal.type("3\n");
    ASSERT_TRUE(terminal.waitFor("Second  (to restore)")) << terminal.screen();
    terminal.type("2\n");
    ASSERT_TRUE(terminal.waitFor("1) Use it for the next restore")) << terminal.screen();
    terminal.type("1\n");

    ASSERT_TRUE(terminal.waitFor("0) Quit", 3)) << terminal.screen();
    const std::string mainScreen = terminal.screen().substr(terminal.screen().rfind("To restore:"));
    EXPECT_TRUE(mainScreen.starts_with("To restore:   First of ")) << mainScreen;
    terminal.type("3\n");
    ASSERT_TRUE(terminal.waitFor("First  (to restore)")) << terminal.screen();
    terminal.type("1\n");
    ASSERT_TRUE(terminal.waitFor("2) Delete it", 2)) << terminal.screen();
    terminal.type("2\n");
    ASSERT_TRUE(terminal.waitFor("1) No   2) Yes")) << terminal.screen();
    terminal.type("2\n");
    ASSERT_TRUE(terminal.waitFor("First  (to restore)", 2)) << terminal.screen();
    terminal.type("0\n");
    quitAtMenu(terminal, 4);
    EXPECT_EQ(occurrences(terminal.screen(), "Backup history"), 0U) << terminal.screen();

    const auto history = device_.run("history");
    EXPECT_TRUE(occurrences(history.output, "1 session(s)") == 1 && occurrences(history.output, "Second") == 0)
        << history.output;
}

}  // namespace
}  // namespace stowhaven
