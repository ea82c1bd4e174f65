#include "core/TemporarySweep.h"
#include "platform/TemporaryDirectory.h"
#include "support/DeviceRootScope.h"
#include "support/TestFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

void touch(const fs::path& path) {
    fs::create_directories(path.parent_path());
    std::ofstream(path) << "x";
}

class TemporarySweepTest : public ::testing::Test {
protected:
    test::TestFolder folder_;
    test::DeviceRootScope root_{folder_.path().string()};
    fs::path temporary_ = TemporaryDirectory::path();
};

TEST_F(TemporarySweepTest, DeletesTheWorkingFilesAndFoldersAndKeepsTheRest) {
    for (const char* swept : {"2014-01-01.bin", "my-file", "pkgs", "cydiaApps.txt", "PREFERENCES.tbz", "CHAT.idx",
                              "2026-11-22_10~15~00.stowhvn", "a_1.0_iphoneos-arm.deb", "x.zip", "y.tar", "old-7"}) {
        touch(temporary_ / swept);
    }
    fs::create_directories(temporary_ / "1234" / "inner");
    for (const char* kept : {"notes.log", "settings.plist"}) touch(temporary_ / kept);
    for (const char* folder : {"debs", "Photos", "Videos", "Keep"}) touch(temporary_ / folder / "inside-1.jpg");

    TemporarySweep::removeTemporaryFiles();
    EXPECT_TRUE(fs::exists(temporary_ / "debs" / "inside-1.jpg")) << "the files' sweep leaves the working folders";
    TemporarySweep::removeTemporaryFolders();

    std::vector<std::string> left;
    for (const auto& entry : fs::recursive_directory_iterator(temporary_)) {
        left.push_back(fs::relative(entry.path(), temporary_).string());
    }
    std::sort(left.begin(), left.end());
    EXPECT_EQ(left, (std::vector<std::string>{"Keep", "Keep/inside-1.jpg", "notes.log", "settings.plist"}));
}

TEST_F(TemporarySweepTest, NeverTouchesAnythingOutsideTheProgramsOwnFolder) {
    const fs::path deviceTemporary = folder_.path() / "var" / "tmp";
    const std::vector<fs::path> outside = {deviceTemporary / "other-1.txt", deviceTemporary / "2014-01-01",
                                           folder_.path() / "pkg-1.deb", folder_.path() / "var" / "x-1"};
    for (const auto& path : outside) touch(path);
    const fs::path savedWorkingFolder = fs::current_path();
    fs::current_path(deviceTemporary);

    TemporarySweep::removeTemporaryFiles();
    TemporarySweep::removeTemporaryFolders();
    fs::current_path(savedWorkingFolder);

    for (const auto& path : outside) EXPECT_TRUE(fs::exists(path)) << path;
}

}  // namespace
}  // namespace stowhaven
