#include "cli/ProgressBar.h"

#include "cli/TextWrap.h"
#include "core/Text.h"

#include <gtest/gtest.h>

#include <sstream>

namespace stowhaven {
namespace {

// What each redraw put on the line, without the carriage return that starts it.
std::vector<std::string> drawings(const std::ostringstream& out) {
    std::vector<std::string> lines = textutil::split(out.str(), '\r');
    lines.erase(lines.begin());
    return lines;
}

TEST(ProgressBarTest, OnATerminalTheBarIsRedrawnInPlace) {
    std::ostringstream out;
    ProgressBar bar(out, true, 80);
    bar.setText("Uploading data:\nNotes \n");
    bar.setFraction(0.42);
    bar.setFraction(1.7);
    bar.setFraction(-1);
    EXPECT_EQ(drawings(out), (std::vector<std::string>{
                                 "[                    ]   -- Uploading data: Notes",
                                 "[########------------]  42% Uploading data: Notes",
                                 "[####################] 100% Uploading data: Notes",
                                 "[--------------------]   0% Uploading data: Notes",
                             }));
}

TEST(ProgressBarTest, TheLineStaysShortOfTheWidthAndCoversALongerOne) {
    std::ostringstream out;
    ProgressBar bar(out, true, 47);
    bar.setText("Copying Stowhaven™ settings and the application data");
    bar.setText("Done");
    for (const std::string& line : drawings(out)) EXPECT_EQ(columnCount(line), 46u) << line;
    EXPECT_EQ(drawings(out)[0], "[                    ]   -- Copying Stowhaven™");
    EXPECT_TRUE(drawings(out)[1].starts_with("[                    ]   -- Done   "));
}

TEST(ProgressBarTest, FinishingEndsADrawnLineOnce) {
    std::ostringstream out;
    ProgressBar bar(out, true, 80);
    bar.finish();
    EXPECT_EQ(out.str(), "") << "nothing drawn, nothing to end";
    bar.setText("Saving");
    bar.setText("");
    bar.finish();
    bar.finish();
    EXPECT_EQ(out.str(), "\r[                    ]   -- Saving\n");
}

TEST(ProgressBarTest, ElsewhereEachNewTextIsAPlainLine) {
    std::ostringstream out;
    ProgressBar bar(out, false, 80);
    bar.setFraction(0.5);
    bar.setText("Packing\nfiles");
    bar.setFraction(0.7);
    bar.setText("Packing files");
    bar.setText("");
    bar.setText("Uploading");
    bar.finish();
    EXPECT_EQ(out.str(), "Packing files\nUploading\n");
}

}  // namespace
}  // namespace stowhaven
