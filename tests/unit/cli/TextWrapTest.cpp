#include "cli/TextWrap.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

TEST(TextWrapTest, ColumnsAreCharactersNotBytes) {
    EXPECT_EQ(columnCount("Stowhaven™ Pro"), 14u);
    EXPECT_EQ(leadingColumns("Stowhaven™ Pro", 10), "Stowhaven™");
    EXPECT_EQ(leadingColumns("™™™", 2), "™™");
    EXPECT_EQ(leadingColumns("short", 80), "short");
}

TEST(TextWrapTest, LinesBreakAtSpacesWithinTheWidth) {
    EXPECT_EQ(wrapped("Back up the data of the applications", 12), "Back up the\ndata of the\napplications");
    EXPECT_EQ(wrapped("Stowhaven™ is ready", 16), "Stowhaven™ is\nready") << "™ is one column";
    EXPECT_EQ(wrapped("Done.", 12), "Done.");
}

TEST(TextWrapTest, NewlinesAndIndentationStayAndLongWordsStayWhole) {
    EXPECT_EQ(wrapped("Missing:\n  com.example.tweak\n\nGo on?", 10), "Missing:\n  com.example.tweak\n\nGo on?");
    EXPECT_EQ(wrapped("  see /var/mobile/Library/Preferences now", 12), "  see\n/var/mobile/Library/Preferences\nnow");
}

}  // namespace
}  // namespace stowhaven
