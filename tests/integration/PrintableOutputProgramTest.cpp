// A shared session's texts reach the owner's terminal: one crafted to act on the terminal (a
// title that sets the window's name, clears the screen and writes over its own line) is shown
// with its control characters as "?", in the program's output and in its log lines alike.

#include "archive/HistoryText.h"
#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "support/SampleSessions.h"
#include "support/SandboxDevice.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace stowhaven {
namespace {

bool holdsControlCharacter(const std::string& text) {
    return std::any_of(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) < 0x20 && c != '\n' && c != '\t') || c == 0x7f;
    });
}

TEST(PrintableOutputProgramTest, ASessionsControlCharactersNeverReachTheTerminal) {
    const test::SupervisorScope scope;
    const test::SandboxDevice device("minimal");
    const test::TestFolder folder;
    const auto session = test::fullSession();
    session->setTitle(std::string("\x1b]2;owned\x07\x1b[2JTrip\r  restored\x7f"));
    const std::string history = folder / "2024-09-12_08~00~00.stowhvn";
    ASSERT_TRUE(FileManager::writeFile(history, *HistoryText::encode(session)));

    const auto outcome = device.run("--verbose inspect " + ShellQuote::path(history));

    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_NE(outcome.output.find("?]2;owned??[2JTrip?  restored?"), std::string::npos) << outcome.output;
    EXPECT_FALSE(holdsControlCharacter(outcome.output));
    EXPECT_FALSE(holdsControlCharacter(outcome.errors));
}

}  // namespace
}  // namespace stowhaven
