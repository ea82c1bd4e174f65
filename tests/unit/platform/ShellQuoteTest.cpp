#include "platform/ShellQuote.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

TEST(ShellQuoteTest, OrdinaryValuesStayAsTheyAre) {
    EXPECT_EQ(ShellQuote::inDoubleQuotes("/var/mobile/Library/Preferences/My Tweak.plist"),
              "/var/mobile/Library/Preferences/My Tweak.plist");
    EXPECT_EQ(ShellQuote::inDoubleQuotes("it's (fine) & <ok> | ; *"), "it's (fine) & <ok> | ; *");
}

TEST(ShellQuoteTest, EscapesWhatTheShellReadsBetweenDoubleQuotes) {
    EXPECT_EQ(ShellQuote::inDoubleQuotes(R"(a"b)"), R"(a\"b)");
    EXPECT_EQ(ShellQuote::inDoubleQuotes("$(reboot)"), R"(\$(reboot))");
    EXPECT_EQ(ShellQuote::inDoubleQuotes("`reboot`"), R"(\`reboot\`)");
    EXPECT_EQ(ShellQuote::inDoubleQuotes(R"(trailing\)"), R"(trailing\\)");
}

TEST(ShellQuoteTest, PackageIdentifiersHoldOnlyTheirOwnCharacters) {
    for (const char* identifier : {"com.example.tweak", "libstdc++", "apt7-lib", "my_tweak", "A1"}) {
        EXPECT_EQ(ShellQuote::packageIdentifier(identifier), identifier);
    }
    for (const char* hostile : {"", "a b", "a;reboot", "$(reboot)", "`reboot`", "a\nb", "a|b", "a>b", "-o", "é"}) {
        EXPECT_FALSE(ShellQuote::packageIdentifier(hostile)) << hostile;
    }
}

}  // namespace
}  // namespace stowhaven
