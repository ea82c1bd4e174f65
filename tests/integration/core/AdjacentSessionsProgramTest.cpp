// Two sessions stored in adjacent seconds, less than a second apart: each has a stamp, a
// history file and a folder of its own, and the history lists both, so that neither can be
// hidden from a restore.

#include "archive/HistoryText.h"
#include "platform/FileManager.h"
#include "storage/StorageLayout.h"
#include "support/SampleSessions.h"
#include "support/SandboxDevice.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace stowhaven {
namespace {

TEST(AdjacentSessionsProgramTest, SessionsInAdjacentSecondsAreListedApart) {
    const test::SupervisorScope scope;
    const test::SandboxDevice device("minimal");
    const std::string storage = device.path("/var/mobile/Library/Preferences/Stowhaven");
    ASSERT_TRUE(device.turnOnScans());
    std::filesystem::create_directories(storage);
    const Date second(800000000.0);
    for (const auto& [date, title] : {std::pair{second.dateByAddingTimeInterval(0.9), "Earlier"},
                                      std::pair{second.dateByAddingTimeInterval(1.1), "Later"}}) {
        const auto session = test::fullSession();
        session->setSessionDate(date);
        session->setTitle(std::string(title));
        ASSERT_TRUE(FileManager::writeFile(storage + "/" + StorageLayout::stamp(date) + ".stowhvn",
                                           *HistoryText::encode(session)));
    }

    const auto history = device.run("history");

    ASSERT_EQ(history.status, 0) << history.errors;
    EXPECT_NE(history.output.find("2 session(s)"), std::string::npos) << history.output;
    EXPECT_NE(history.output.find("Earlier"), std::string::npos) << history.output;
    EXPECT_NE(history.output.find("Later"), std::string::npos) << history.output;
}

}  // namespace
}  // namespace stowhaven
