#include "core/Supervisor.h"
#include "core/TemporarySweep.h"
#include "platform/TemporaryDirectory.h"
#include "support/SupervisorScope.h"

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

TEST_F(SupervisorFilesTest, TemporaryNamesAreInTheProgramsFolderAndAreSwept) {
    const std::string plain = supervisor_.getTemporaryFileName(false);
    const std::string secure = supervisor_.getTemporaryFileName(true);
    EXPECT_NE(plain, secure);
    for (const fs::path name : {plain, secure}) {
        EXPECT_EQ(name.parent_path(), TemporaryDirectory::path());
        EXPECT_TRUE(TemporarySweep::isSweptName(name.filename())) << name;
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

}  // namespace
}  // namespace stowhaven
