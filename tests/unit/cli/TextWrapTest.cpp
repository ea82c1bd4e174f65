#include "cli/TextWrap.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

// The prompt test shows plain wrapping, the progress bar test the columns of multi-byte text.
TEST(TextWrapTest, NewlinesAndIndentationStayAndLongWordsStayWhole) {
    EXPECT_EQ(wrapped("Missing:\n  com.example.tweak\n\nGo on?", 10), "Missing:\n  com.example.tweak\n\nGo on?");
    EXPECT_EQ(wrapped("  see /var/mobile/Library/Preferences now", 12), "  see\n/var/mobile/Library/Preferences\nnow");
    EXPECT_EQ(wrapped("Stowhaven™ is ready", 16), "Stowhaven™ is\nready") << "™ is one column";
}

}  // namespace
}  // namespace stowhaven
