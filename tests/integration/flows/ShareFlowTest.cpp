// The sharing actions of the main screen's options, on a device with nothing loaded yet:
// what the clipboard gets, and what is left alone when there is nothing to share.

#include "flows/ShareManager.h"
#include "platform/Strings.h"
#include "platform/TemporaryDirectory.h"
#include "support/CapturedLog.h"
#include "support/SupervisorScope.h"
#include "support/TestFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace stowhaven {
namespace {

class RecordingPasteboard final : public Pasteboard {
public:
    void setItems(const std::vector<PasteboardItem>& newItems) override { items = newItems; }
    std::vector<PasteboardItem> items;
};

class ShareFlowTest : public ::testing::Test {
protected:
    ShareFlowTest() { scope_.supervisor(); }

    test::SupervisorScope scope_;
};

TEST_F(ShareFlowTest, WithNothingToShareTheUserIsToldAndNoMailOrPrintoutIsMade) {
    test::CapturedLog log;
    const ShareData data = ShareManager::userData();
    EXPECT_EQ(data.text, "");
    scope_.serveMainQueue();
    ASSERT_EQ(scope_.screens.alerts->alerts.size(), 1U);
    EXPECT_EQ(scope_.screens.alerts->alerts[0].message, Strings::localized("NOTHING_TO_SHARE"));

    ShareManager::mail(data, scope_.screens.alerts);
    scope_.serveMainQueue();
    EXPECT_TRUE(scope_.services.mail.messages.empty());
    EXPECT_TRUE(scope_.services.mail.openedURLs.empty());

    test::TestFolder folder;
    EXPECT_FALSE(ShareManager::print(folder / "list.pdf"));
    scope_.serveMainQueue();
    EXPECT_FALSE(std::filesystem::exists(folder / "list.pdf"));
    EXPECT_TRUE(log.contains("Could not create the attributed string for the framesetter"));
    // The printout's own alert is for a list that could not be laid out, not for an empty one.
    EXPECT_EQ(scope_.screens.alerts->alerts.back().message, Strings::localized("NOTHING_TO_SHARE"));
}

TEST_F(ShareFlowTest, AVCardWithoutACurrentSessionDoesNothing) {
    ShareManager::mailVCard(scope_.screens.alerts);
    scope_.serveMainQueue();
    EXPECT_TRUE(scope_.services.mail.messages.empty());
    EXPECT_TRUE(scope_.services.mail.openedURLs.empty());
    EXPECT_TRUE(scope_.screens.alerts->alerts.empty());
    EXPECT_FALSE(std::filesystem::exists(TemporaryDirectory::path() + "/Stow Haven.vcf"));
}

TEST_F(ShareFlowTest, TheClipboardGetsEachItemThereIsTextFirst) {
    RecordingPasteboard pasteboard;
    ShareManager::copyToClipboard({.text = "1. Cydia\n", .url = std::nullopt, .png = std::nullopt}, pasteboard);
    ASSERT_EQ(pasteboard.items.size(), 1U);
    EXPECT_EQ(pasteboard.items[0].type, "public.text");
    EXPECT_EQ(pasteboard.items[0].bytes, "1. Cydia\n");

    ShareManager::copyToClipboard({.text = "1. Cydia\n", .url = "https://x.example", .png = "\x89PNG"}, pasteboard);
    ASSERT_EQ(pasteboard.items.size(), 3U);
    EXPECT_EQ(pasteboard.items[0].type + pasteboard.items[1].type + pasteboard.items[2].type,
              "public.textpublic.urlpublic.png");
}

}  // namespace
}  // namespace stowhaven
