// The contents of one place and the albums, chosen with the real program on a sandbox
// device: what the backup archives and what the restore gives back follow the choice.

#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "support/DeviceAlbums.h"
#include "support/SandboxDevice.h"
#include "support/TerminalProgram.h"
#include "support/TerminalWidth.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <map>
#include <string>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

constexpr const char* kStorageFolder = "/var/mobile/Library/Preferences/Stowhaven";

bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

bool turnOnAlbums(const test::SandboxDevice& device) {
    return device.turnOn(
        {"AutoScanPkgEnabled", "AutoScanStockAppsEnabled", "AutoScanPhotosEnabled", "AutoScanVideosEnabled"});
}

using test::albumsOf;

// A restore's default of photo albums names one album: only its photos go back into the
// library; the videos, with no default, all go back.
TEST(SelectContentsProgramTest, AnAlbumRestoreTakesOnlyThePhotoAlbumsOfTheRestoreDefault) {
    const test::SandboxDevice original("demo");
    ASSERT_TRUE(turnOnAlbums(original));
    auto albums = albumsOf(original);
    ASSERT_FALSE(albums["Holidays"]["photos"].empty());
    ASSERT_FALSE(albums["Work"]["photos"].empty());
    const auto backup = original.run("backup --yes");
    ASSERT_EQ(backup.status, 0) << backup.errors;

    const test::SandboxDevice fresh = test::SandboxDevice::fresh("demo");
    fs::copy(original.path(kStorageFolder), fresh.path(kStorageFolder), fs::copy_options::recursive);
    ASSERT_TRUE(turnOnAlbums(fresh));
    const auto chosen = fresh.run("select albums --restore --photos --only Holidays --save-default");
    ASSERT_EQ(chosen.status, 0) << chosen.errors;
    const auto restore = fresh.run("restore --yes");
    EXPECT_EQ(restore.status, 0) << restore.output << restore.errors;

    auto restored = albumsOf(fresh);
    EXPECT_EQ(restored["Holidays"]["photos"], albums["Holidays"]["photos"]);
    EXPECT_EQ(restored["Camera Roll"]["photos"], albums["Holidays"]["photos"]) << "no photo of another album came back";
    EXPECT_TRUE(restored["Work"]["photos"].empty()) << restored["Work"];
    EXPECT_EQ(restored["Camera Roll"]["videos"], albums["Camera Roll"]["videos"]);
}

// No album chosen is a choice of its own, kept as such, not taken for "all" at the next run.
TEST(SelectContentsProgramTest, NoPhotoAlbumChosenStaysSoAtTheNextRun) {
    const test::SandboxDevice device("demo");
    ASSERT_TRUE(turnOnAlbums(device));
    ASSERT_EQ(device.run("select albums --photos --none --save-default").status, 0);
    const auto shown = nlohmann::json::parse(device.run("select albums --photos --json").output);
    ASSERT_FALSE(shown["items"].empty());
    for (const auto& album : shown["items"]) EXPECT_FALSE(album["selected"].get<bool>()) << album;
    const auto videos = nlohmann::json::parse(device.run("select albums --videos --json").output);
    EXPECT_TRUE(videos["items"][0]["selected"].get<bool>()) << "the videos keep their own default";
}

// The themes folder of a device with three themes, one named as an attacker would, and the
// other options scanned.
class FolderContentsTest : public ::testing::Test {
protected:
    FolderContentsTest() {
        EXPECT_TRUE(device_.turnOn({"AutoScanOtherOptionsEnabled"}));
        for (const std::string theme : {"Dusk.theme", kHostileTheme}) {
            fs::create_directories(device_.path(kThemes + theme));
            FileManager::writeFile(device_.path(kThemes + theme + "/Info.plist"), "<plist/>");
        }
    }

    // The names of the members of the themes' archive of the one session on storage.
    std::string archivedThemes() const {
        const fs::path storage = device_.path(kStorageFolder);
        for (const auto& entry : fs::recursive_directory_iterator(storage)) {
            if (entry.path().filename() != "WinterBoardThemes.tbz") continue;
            return test::runCommand("tar -xjOf " + ShellQuote::path(entry.path().string()) +
                                    " | tar -t --quoting-style=literal");
        }
        ADD_FAILURE() << "no themes' archive on storage";
        return "";
    }

    static constexpr const char* kThemes = "/Library/Themes/";
    // Were it expanded or split by a shell, the archive would hold another name.
    static constexpr const char* kHostileTheme = "x\" $(echo y) `echo z` $HOME \\\" ;.theme";
    const test::SandboxDevice device_{"demo"};
};

TEST_F(FolderContentsTest, AFolderItemDeselectedAndSavedIsNotArchivedByTheNextBackup) {
    const auto chosen = device_.run("select folder 'Winterboard Themes' --remove Dusk.theme --save-default --json");
    ASSERT_EQ(chosen.status, 0) << chosen.errors;
    const auto listed = nlohmann::json::parse(chosen.output);
    EXPECT_EQ(listed["folder"], "Winterboard Themes");
    std::map<std::string, bool> selected;
    for (const auto& item : listed["items"]) selected[item["name"]] = item["selected"];
    EXPECT_EQ(selected,
              (std::map<std::string, bool>{{"Dusk.theme", false}, {"Paperlight.theme", true}, {kHostileTheme, true}}));

    const auto backup = device_.run("backup --yes");
    ASSERT_EQ(backup.status, 0) << backup.errors;
    const std::string members = archivedThemes();
    EXPECT_TRUE(contains(members, "Paperlight.theme/IconBundles/com.apple.mobilesafari-large.png")) << members;
    EXPECT_TRUE(contains(members, std::string(kHostileTheme) + "/Info.plist")) << members;
    EXPECT_FALSE(contains(members, "Dusk.theme")) << members;

    // Every item saved as selected keeps no list, so that a theme found later comes up selected.
    ASSERT_EQ(device_.run("select folder 'Winterboard Themes' --all --save-default").status, 0);
    fs::create_directories(device_.path(std::string(kThemes) + "Later.theme"));
    FileManager::writeFile(device_.path(std::string(kThemes) + "Later.theme/Info.plist"), "<plist/>");
    const auto later = device_.run("select folder 'Winterboard Themes'");
    EXPECT_TRUE(contains(later.output, "4 of 4 selected")) << later.output;

    const auto refused = device_.run("select folder Activator");
    EXPECT_EQ(refused.status, 2) << "a folder taken whole has no items to choose";
    EXPECT_TRUE(contains(refused.errors, "no folder named \"Activator\"")) << refused.errors;
}

// From the main menu at 80 columns: the folders' list, the themes' items by c, one switched
// and saved; the next run shows the saved choice.
TEST_F(FolderContentsTest, TheFoldersListOpensAFoldersItemsToSwitchAndSaveWithinTheTerminal) {
    test::TerminalProgram terminal("--root " + ShellQuote::path(device_.root()));
    ASSERT_TRUE(terminal.waitFor("3) Choose what to back up")) << terminal.screen();
    terminal.type("3\n");
    ASSERT_TRUE(terminal.waitFor("folders to back up")) << terminal.screen();
    ASSERT_TRUE(terminal.waitFor("> ", 2)) << terminal.screen();
    const std::string list = terminal.screen();
    const auto at = list.rfind(") [x] Winterboard Themes");
    ASSERT_NE(at, std::string::npos) << list;
    const std::string number = list.substr(list.rfind(' ', at) + 1, at - list.rfind(' ', at) - 1);
    terminal.type("c " + number + "\n");
    ASSERT_TRUE(terminal.waitFor("Winterboard Themes to back up - 3 of 3 selected")) << terminal.screen();
    ASSERT_TRUE(terminal.waitFor("1) [x] Dusk.theme")) << terminal.screen();
    terminal.type("1\n");
    ASSERT_TRUE(terminal.waitFor("1) [ ] Dusk.theme")) << terminal.screen();
    terminal.type("s\n");
    ASSERT_TRUE(terminal.waitFor("Saved as the default of the next backup.")) << terminal.screen();
    terminal.type("\n");
    ASSERT_TRUE(terminal.waitFor("folders to back up", 2)) << terminal.screen();
    terminal.type("\n");
    ASSERT_TRUE(terminal.waitFor("0) Quit", 2)) << terminal.screen();
    terminal.type("0\n");
    EXPECT_EQ(terminal.finish(), 0) << terminal.screen();
    EXPECT_EQ(test::linesWiderThan(terminal.screen(), 80), "") << terminal.screen();

    const auto saved = device_.run("select folder 'Winterboard Themes'");
    EXPECT_TRUE(contains(saved.output, "[ ] Dusk.theme")) << saved.output;
    EXPECT_TRUE(contains(saved.output, "[x] Paperlight.theme")) << saved.output;
}

}  // namespace
}  // namespace stowhaven
