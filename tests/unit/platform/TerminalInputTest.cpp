#include "platform/TerminalInput.h"

#include "unit/dispatch/DispatchTestHelpers.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <future>

namespace stowhaven {
namespace {

using Kind = InputLine::Kind;

TEST(TerminalInputTest, ReadsOneLineAtATimeAndLeavesTheRestInThePipe) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(write(ends[1], "1\nopen sesame\nlast", 18), 18);
    close(ends[1]);

    EXPECT_EQ(TerminalInput(ends[0]).readLine(false).text, "1");
    // A second reader finds the next line: the first took nothing beyond its own.
    TerminalInput input(ends[0]);
    const InputLine second = input.readLine(true);
    EXPECT_EQ(second.kind, Kind::Line);
    EXPECT_EQ(second.text, "open sesame") << "no terminal, no echo to turn off";
    EXPECT_EQ(input.readLine(false).text, "last") << "a last line without newline still counts";
    EXPECT_EQ(input.readLine(false).kind, Kind::EndOfInput);
    close(ends[0]);
}

TEST(TerminalInputTest, AnotherThreadEndsAReadUnderWayAndOnlyThatOne) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    TerminalInput input(ends[0]);
    EXPECT_FALSE(input.interruptRead()) << "no read is under way";

    auto line = std::async(std::launch::async, [&] { return input.readLine(false); });
    // The read may not have started yet: the wake-up is sent until it takes.
    ASSERT_TRUE(test::eventually([&] { return input.interruptRead(); }));
    ASSERT_EQ(line.wait_for(test::kFailureGuard), std::future_status::ready);
    EXPECT_EQ(line.get().kind, Kind::Interrupted);

    ASSERT_EQ(write(ends[1], "next\n", 5), 5);
    EXPECT_EQ(input.readLine(false).text, "next") << "the next read is not interrupted";
    close(ends[0]);
    close(ends[1]);
}

}  // namespace
}  // namespace stowhaven
