#include "core/FileSizes.h"
#include "platform/FileManager.h"
#include "support/TestFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace stowhaven {
namespace {

class FileSizesTest : public ::testing::Test {
protected:
    void file(const std::string& path, std::size_t kilobytes) {
        const std::string full = folder_ / path;
        std::filesystem::create_directories(std::filesystem::path(full).parent_path());
        FileManager::writeFile(full, std::string(kilobytes * 1024, 'x'));
    }
    double measure(const std::string& path, const std::optional<std::string>& originalPath = std::nullopt) {
        return FileSizes::getFileSizeAtPath(folder_ / path, originalPath) * 1024;  // in Kb
    }

    test::TestFolder folder_;
};

TEST_F(FileSizesTest, AFolderCountsItsFilesButCachesCookiesAndFinderLitter) {
    file("Library/Preferences/a.plist", 4);
    file("Library/Caches/big.db", 512);
    file("Caches/cache.db", 256);
    file("Cookies/Cookies.binarycookies", 8);
    file("Documents/.DS_Store", 6);
    file("Documents/notes.txt", 10);
    EXPECT_DOUBLE_EQ(measure(""), 4 + 512 + 10) << "only a top-level Caches/ is left out";
    EXPECT_DOUBLE_EQ(measure("Library/Preferences/a.plist"), 4) << "a file is its own size";
    EXPECT_DOUBLE_EQ(measure("Caches"), 256) << "the folder itself is measured in full";
    EXPECT_EQ(FileSizes::getFileSizeAtPath(folder_ / "missing", std::nullopt), FileSizes::kUnmeasurable);
}

TEST_F(FileSizesTest, ThePhotoLibrarysOriginalPathsChooseTheirMedia) {
    file("100APPLE/IMG_0001.JPG", 30);
    file("100APPLE/IMG_0002.png", 20);
    file("100APPLE/IMG_0003.MOV", 500);
    EXPECT_DOUBLE_EQ(measure("", FileSizes::photoLibraryOriginalPath()), 50) << "photos: all but videos";
    EXPECT_DOUBLE_EQ(measure("", FileSizes::cameraRollOriginalPath()), 500) << "videos: all but pictures";
    EXPECT_DOUBLE_EQ(measure("", std::string("/somewhere/else")), 0) << "any other original path counts nothing";
}

}  // namespace
}  // namespace stowhaven
