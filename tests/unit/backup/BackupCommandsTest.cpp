// The command lines of the backup pipeline: how device paths reach tar on the device itself
// and on another device root, and how values from outside stay plain text for the shell.

#include "backup/BackupCommands.h"
#include "support/DeviceRootScope.h"
#include "support/SandboxDevice.h"

#include <gtest/gtest.h>

#include <string>

namespace stowhaven {
namespace {

constexpr const char* kSandboxRoot = "/srv/devices/phone";
constexpr const char* kDocuments = "/var/mobile/Containers/Data/Application/7A1D/Documents";
constexpr const char* kLibrary = "/var/mobile/Containers/Data/Application/7A1D/Library";

TEST(BackupCommandsTest, OnTheDeviceItselfTarTakesTheDevicePathsAsTheyAre) {
    test::DeviceRootScope device("/");
    const std::string archive = "/var/tmp/stowhaven/Notes.tbz";

    EXPECT_EQ(BackupCommands::createArchive(archive, false, "/var/mobile/Library/Notes"),
              R"(tar -cf "/var/tmp/stowhaven/Notes.tbz" "/var/mobile/Library/Notes")");
    EXPECT_EQ(BackupCommands::createArchiveStartingWith(archive, true, "/var/mobile/Library/Preferences/a.plist"),
              R"(tar -cj -f "/var/tmp/stowhaven/Notes.tbz" "/var/mobile/Library/Preferences/a.plist")");
    EXPECT_EQ(BackupCommands::createWithoutArchiveFile(false, "/var/mobile/Library/SpringBoard/IconState.plist"),
              R"(tar -c "/var/mobile/Library/SpringBoard/IconState.plist")");
    EXPECT_EQ(BackupCommands::updateArchive(archive, {"/Library/Ringtones/a.m4r", "/Library/Ringtones/b.m4r"}),
              R"(tar -uf "/var/tmp/stowhaven/Notes.tbz" "/Library/Ringtones/a.m4r" "/Library/Ringtones/b.m4r")");
    EXPECT_EQ(BackupCommands::mediaArchive("/var/tmp/stowhaven/Videos.tbz", false, false),
              R"(tar -c  "--exclude=Cache*" "--exclude=*.JPG" -f "/var/tmp/stowhaven/Videos.tbz" )"
              R"("/var/mobile/Media/DCIM" "/var/mobile/Media/PhotoData")");
    // A folder without a file of its tweak hands tar an empty name, which it reports and passes by.
    EXPECT_EQ(BackupCommands::folderArchive("/var/tmp/stowhaven/Themes.tbz", "/Library/Themes", ""),
              R"(tar -cjf "/var/tmp/stowhaven/Themes.tbz" "/Library/Themes" "")");
    EXPECT_EQ(BackupCommands::nestedArchive("/var/tmp/stowhaven/Ringtones.tar", "/var/tmp/stowhaven/Ringtones.tbz"),
              R"(tar -cf - "/var/tmp/stowhaven/Ringtones.tar" | bzip2 -c --best > "/var/tmp/stowhaven/Ringtones.tbz"; )"
              R"(rm -f "/var/tmp/stowhaven/Ringtones.tar")");
}

TEST(BackupCommandsTest, OnAnotherRootTheMembersAreTheDevicePathsTakenFromTheRoot) {
    test::DeviceRootScope device(kSandboxRoot);
    const std::string temporary = std::string(kSandboxRoot) + "/var/tmp/stowhaven";

    EXPECT_EQ(BackupCommands::createArchive(temporary + "/Notes.tbz", false, "/var/mobile/Library/Notes"),
              R"(tar -cf "/srv/devices/phone/var/tmp/stowhaven/Notes.tbz" -C "/srv/devices/phone" )"
              R"("var/mobile/Library/Notes")");
    EXPECT_EQ(BackupCommands::createWithoutArchiveFile(true, "/var/mobile/Library/SpringBoard/IconState.plist"),
              R"(tar -cj -C "/srv/devices/phone" "var/mobile/Library/SpringBoard/IconState.plist")");
    EXPECT_EQ(BackupCommands::updateArchive(temporary + "/Notes.tbz", {"/Library/Ringtones/a.m4r", "/b.m4r"}),
              R"(tar -uf "/srv/devices/phone/var/tmp/stowhaven/Notes.tbz" -C "/srv/devices/phone" )"
              R"("Library/Ringtones/a.m4r" "b.m4r")");
    EXPECT_EQ(BackupCommands::mediaArchive(temporary + "/Photos.tbz", false, true),
              R"(tar -c  "--exclude=Cache*" "--exclude=*.MOV" -f "/srv/devices/phone/var/tmp/stowhaven/Photos.tbz" )"
              R"(-C "/srv/devices/phone" "var/mobile/Media/DCIM" "var/mobile/Media/PhotoData")");
    // The empty name stays empty: it never becomes the root itself.
    EXPECT_EQ(BackupCommands::folderArchive(temporary + "/Themes.tbz", "/Library/Themes", ""),
              R"(tar -cjf "/srv/devices/phone/var/tmp/stowhaven/Themes.tbz" -C "/srv/devices/phone" )"
              R"("Library/Themes" "")");
    // The inner tar goes in under its place on the device; the host's path is what gets removed.
    EXPECT_EQ(BackupCommands::nestedArchive(temporary + "/Ringtones.tar", temporary + "/Ringtones.tbz"),
              R"(tar -cf - -C "/srv/devices/phone" "var/tmp/stowhaven/Ringtones.tar" | bzip2 -c --best > )"
              R"("/srv/devices/phone/var/tmp/stowhaven/Ringtones.tbz"; )"
              R"(rm -f "/srv/devices/phone/var/tmp/stowhaven/Ringtones.tar")");
    // The split works in the folder it is given, wherever the root is.
    EXPECT_EQ(BackupCommands::split(temporary, 20, temporary + "/Notes.tbz", "NOTES"),
              R"(cd "/srv/devices/phone/var/tmp/stowhaven" ; "split" -b 20M -d -a 3 )"
              R"("/srv/devices/phone/var/tmp/stowhaven/Notes.tbz" "NOTES"-;\ls -1a "NOTES"-* > "NOTES".idx; )"
              R"(rm -f "/srv/devices/phone/var/tmp/stowhaven/Notes.tbz")");
}

TEST(BackupCommandsTest, ApplicationArchivesPutTheExcludesWhereTheRootsTarReadsThem) {
    {
        test::DeviceRootScope device("/");
        EXPECT_EQ(BackupCommands::applicationArchive("/var/tmp/stowhaven/App.tbz", kDocuments, kLibrary),
                  R"(tar -cjf "/var/tmp/stowhaven/App.tbz" )"
                  R"("/var/mobile/Containers/Data/Application/7A1D/Documents" )"
                  R"("/var/mobile/Containers/Data/Application/7A1D/Library" "--exclude=Caches" "--exclude=Cookies")");
    }
    test::DeviceRootScope device(kSandboxRoot);
    EXPECT_EQ(BackupCommands::applicationArchive("/srv/devices/phone/var/tmp/stowhaven/App.tbz", kDocuments, kLibrary),
              R"(tar -cjf "/srv/devices/phone/var/tmp/stowhaven/App.tbz" "--exclude=Caches" "--exclude=Cookies" )"
              R"(-C "/srv/devices/phone" "var/mobile/Containers/Data/Application/7A1D/Documents" )"
              R"("var/mobile/Containers/Data/Application/7A1D/Library")");
}

// The double-quoted word of a command line that starts as ` "PREFIX`, as it stands there.
std::string quotedWordStarting(const std::string& command, const std::string& prefix) {
    const std::size_t start = command.rfind(" \"" + prefix);
    return start == std::string::npos ? "" : command.substr(start + 1);
}

TEST(BackupCommandsTest, HostileNamesReachTheShellAsPlainText) {
    // A backslash before a dollar, and one at the very end, catch a backslash left unescaped.
    const std::string hostile = R"(/var/mobile/Library/Preferences/a "b" $(echo x) `echo y` c\$HOME d\)";
    for (const char* root : {"/", kSandboxRoot}) {
        SCOPED_TRACE(root);
        test::DeviceRootScope device(root);
        const std::string member = std::string(root) == "/" ? hostile : hostile.substr(1);
        for (const std::string& command : {BackupCommands::createArchive("/t/a.tbz", false, hostile),
                                           BackupCommands::updateArchive("/t/a", {hostile}),
                                           BackupCommands::folderArchive("/t/a.tbz", "/Library/Themes", hostile)}) {
            SCOPED_TRACE(command);
            const std::string word = quotedWordStarting(command, member.substr(0, member.find(' ')));
            ASSERT_FALSE(word.empty());
            // The shell reads the word back as the very name, running and expanding nothing.
            EXPECT_EQ(test::runCommand("printf '%s' " + word), member);
        }
    }
    // The archive and the name of the parts are quoted alike.
    test::DeviceRootScope device("/");
    const std::string split = BackupCommands::split("/t", 1, "/t/$(echo x).tbz", "`echo y`");
    EXPECT_NE(split.find(R"("/t/\$(echo x).tbz")"), std::string::npos) << split;
    EXPECT_NE(split.find(R"("\`echo y\`"-)"), std::string::npos) << split;
}

}  // namespace
}  // namespace stowhaven
