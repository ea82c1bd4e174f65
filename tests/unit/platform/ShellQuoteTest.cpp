#include "platform/ShellQuote.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

// What double quotes make of a value is shown with the real shell in ShellTest.
TEST(ShellQuoteTest, PackageIdentifiersHoldOnlyTheirOwnCharacters) {
    for (const char* identifier : {"com.example.tweak", "libstdc++", "apt7-lib", "my_tweak", "A1"}) {
        EXPECT_EQ(ShellQuote::packageIdentifier(identifier), identifier);
    }
    for (const char* hostile : {"", "a b", "a;reboot", "$(reboot)", "`reboot`", "a\nb", "a|b", "a>b", "-o", "é"}) {
        EXPECT_FALSE(ShellQuote::packageIdentifier(hostile)) << hostile;
    }
}

TEST(ShellQuoteTest, PlainPathsHoldNothingTheShellWouldRead) {
    for (const char* path : {"/var/mobile/Library/Preferences/a.plist", "/x/2024-01-01_10~00~00/DEBS", "/a+b"}) {
        EXPECT_EQ(ShellQuote::plainPath(path), path);
    }
    for (const char* hostile : {"", "/a b", "/a;reboot", "/$(reboot)", "/a`b`", "~/x", "-rf", "/a*", "/a\nb", "/'a'"}) {
        EXPECT_FALSE(ShellQuote::plainPath(hostile)) << hostile;
    }
}

}  // namespace
}  // namespace stowhaven
