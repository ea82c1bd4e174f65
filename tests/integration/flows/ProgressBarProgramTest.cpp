// A job's progress bar on a terminal of 80 columns, with the real program on a sandbox device.

#include "platform/ShellQuote.h"
#include "support/SandboxDevice.h"
#include "support/TerminalProgram.h"
#include "support/TerminalWidth.h"

#include <gtest/gtest.h>

#include <string>

namespace stowhaven {
namespace {

// The job's end is told before the fraction of its last step comes: the bar's last drawing
// must read complete all the same.
TEST(ProgressBarProgramTest, TheLastDrawingOfABackupsBarReadsComplete) {
    const test::SandboxDevice device("minimal");
    ASSERT_TRUE(device.turnOn({"AutoScanPkgEnabled"}));
    test::TerminalProgram terminal("--root " + ShellQuote::path(device.root()) + " backup --yes");
    EXPECT_EQ(terminal.finish(), 0) << terminal.screen();
    const std::string& screen = terminal.screen();
    const auto end = screen.find("Backup complete");
    ASSERT_NE(end, std::string::npos) << screen;
    const std::string bar = screen.substr(0, end);
    const std::string lastDrawing = bar.substr(bar.rfind('\r', bar.rfind("Done!")) + 1);
    EXPECT_TRUE(lastDrawing.starts_with("[####################] 100% Done!")) << lastDrawing;
    EXPECT_EQ(test::linesWiderThan(screen, 80), "") << screen;
}

}  // namespace
}  // namespace stowhaven
