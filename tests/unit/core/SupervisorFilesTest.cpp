#include "core/Supervisor.h"
#include "core/TemporarySweep.h"
#include "platform/TemporaryDirectory.h"
#include "platform/UserDefaults.h"
#include "support/SupervisorScope.h"
#include "support/CapturedLog.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

class SupervisorFilesTest : public ::testing::Test {
protected:
    test::SupervisorScope scope_;
    Supervisor& supervisor_ = scope_.supervisor();
};

TEST_F(SupervisorFilesTest, TemporaryNamesAreTheTimeNowInTheProgramsFolderAndAreSwept) {
    scope_.services.clock.time = Date(436000000.25).timePoint();
    const std::string folder = TemporaryDirectory::path();

    EXPECT_EQ(supervisor_.getTemporaryFileName(false), folder + "/436000000.250000.txt");
    EXPECT_EQ(supervisor_.getTemporaryFileName(true), folder + "/secure436000000.250000.txt");
    for (const bool secure : {false, true}) {
        EXPECT_TRUE(TemporarySweep::isSweptName(fs::path(supervisor_.getTemporaryFileName(secure)).filename()));
    }
}

TEST_F(SupervisorFilesTest, DeletingRemovesFilesOnlyAndHasNothingToDoForTheRest) {
    const fs::path file = scope_.path("/var/mobile/old.txt");
    const fs::path folder = scope_.path("/var/mobile/Keep");
    fs::create_directories(folder);
    std::ofstream(file) << "x";
    std::ofstream(folder / "inside") << "x";

    EXPECT_TRUE(supervisor_.deleteFileAtPath(file));
    EXPECT_FALSE(fs::exists(file));
    EXPECT_TRUE(supervisor_.deleteFileAtPath(file));
    EXPECT_TRUE(supervisor_.deleteFileAtPath(folder));
    EXPECT_TRUE(fs::exists(folder / "inside"));
}

TEST_F(SupervisorFilesTest, AValueWithoutAKeyIsNotStored) {
    test::CapturedLog log;
    supervisor_.lowLevelStorePreferencesData("value", "");
    EXPECT_TRUE(UserDefaults::standard().dictionaryRepresentation().empty());
    EXPECT_FALSE(fs::exists(UserDefaults::pathForUser("mobile")));
    EXPECT_TRUE(log.contains("Can't persist a NULL key!"));
}

}  // namespace
}  // namespace stowhaven
