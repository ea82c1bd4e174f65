// The settings screens on a terminal of 80 columns, as a new user meets them at a first
// start, when every scan is off.

#include "platform/ShellQuote.h"
#include "support/SandboxDevice.h"
#include "support/TerminalProgram.h"
#include "support/TerminalWidth.h"

#include <gtest/gtest.h>

#include <string>

namespace stowhaven {
namespace {

// "Open the settings" at the first start: a scan turned on there counts at once, and the
// main screen loads the packages without a restart.
TEST(SettingsScreenProgramTest, AScanTurnedOnFromTheFirstStartsQuestionLoadsWithoutARestart) {
    const test::SandboxDevice device("minimal");
    test::TerminalProgram terminal("--root " + ShellQuote::path(device.root()));
    ASSERT_TRUE(terminal.waitFor("1) No   2) Yes")) << terminal.screen();
    terminal.type("2\n");
    ASSERT_TRUE(terminal.waitFor("1) Options: scans")) << terminal.screen();
    terminal.type("1\n");
    ASSERT_TRUE(terminal.waitFor("[ ] Scan Cydia packages")) << terminal.screen();
    terminal.type("1\n");
    ASSERT_TRUE(terminal.waitFor("[x] Scan Cydia packages")) << terminal.screen();
    terminal.type("0\n");
    ASSERT_TRUE(terminal.waitFor("1) Options: scans", 2)) << terminal.screen();
    const std::size_t left = terminal.screen().size();
    terminal.type("0\n");

    ASSERT_TRUE(terminal.waitFor("0) Quit")) << terminal.screen();
    const std::string mainScreen = terminal.screen().substr(left);
    for (const char* loaded : {"Scanning all packages...", "No previous backup was found.", "Estimated size: "}) {
        EXPECT_NE(mainScreen.find(loaded), std::string::npos) << loaded << "\n" << terminal.screen();
    }
    EXPECT_EQ(mainScreen.find("Estimated size: 0Mb"), std::string::npos) << "the packages count: " << mainScreen;
    EXPECT_EQ(mainScreen.find("All scans are turned off"), std::string::npos) << mainScreen;
    EXPECT_NE(mainScreen.find("1) Back up now"), std::string::npos) << "the job is offered again: " << mainScreen;
    terminal.type("0\n");
    EXPECT_EQ(terminal.finish(), 0) << terminal.screen();
    EXPECT_EQ(test::linesWiderThan(terminal.screen(), 80), "") << terminal.screen();
}

}  // namespace
}  // namespace stowhaven
