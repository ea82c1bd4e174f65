// The command lines the system hands the shell, on the device itself: each template filled
// in. The integration tests run them with the real tools on other device roots; here the
// exact texts, and how values from outside stay plain text for the shell.

#include "archive/BuiltInCipherKey.h"
#include "archive/FileCipher.h"
#include "backup/BackupCommands.h"
#include "core/PackageScan.h"
#include "platform/ShellQuote.h"
#include "restore/RestoreCommands.h"
#include "support/DeviceRootScope.h"
#include "support/SandboxDevice.h"

#include <gtest/gtest.h>

#include <string>

namespace stowhaven {
namespace {

constexpr const char* kTemporary = "/var/tmp/stowhaven";
constexpr const char* kDocuments = "/var/mobile/Containers/Data/Application/7A1D/Documents";
constexpr const char* kLibrary = "/var/mobile/Containers/Data/Application/7A1D/Library";

struct Row {
    std::string made;
    std::string expected;
};

TEST(CommandLinesTest, OnTheDeviceItselfEachTemplateIsFilledInAsItStands) {
    test::DeviceRootScope device("/");
    const std::string t = kTemporary;
    const std::string key(BuiltInCipherKey::kKeyHex);
    const Row rows[] = {
        {PackageScan::command(t + "/cydiaApps.txt"),
         "dpkg-query -W -f='${name}\t${Package}\t${Version}\t${Maintainer}\t${Section}\t${Depends}\t${status}\n' > "
         "/var/tmp/stowhaven/cydiaApps.txt"},
        {BackupCommands::createArchive(t + "/Notes.tbz", false, "/var/mobile/Library/Notes"),
         R"(tar -cf "/var/tmp/stowhaven/Notes.tbz" "/var/mobile/Library/Notes")"},
        {BackupCommands::createArchiveStartingWith(t + "/Notes.tbz", true, "/var/mobile/Library/Preferences/a.plist"),
         R"(tar -cj -f "/var/tmp/stowhaven/Notes.tbz" "/var/mobile/Library/Preferences/a.plist")"},
        {BackupCommands::createWithoutArchiveFile(false, "/var/mobile/Library/SpringBoard/IconState.plist"),
         R"(tar -c "/var/mobile/Library/SpringBoard/IconState.plist")"},
        {BackupCommands::updateArchive(t + "/Notes.tbz", {"/Library/Ringtones/a.m4r", "/Library/Ringtones/b.m4r"}),
         R"(tar -uf "/var/tmp/stowhaven/Notes.tbz" "/Library/Ringtones/a.m4r" "/Library/Ringtones/b.m4r")"},
        {BackupCommands::mediaArchive(t + "/Videos.tbz", false, false),
         R"(tar -c  "--exclude=Cache*" "--exclude=*.JPG" -f "/var/tmp/stowhaven/Videos.tbz" )"
         R"("/var/mobile/Media/DCIM" "/var/mobile/Media/PhotoData")"},
        {BackupCommands::mediaArchive(t + "/Photos.tbz", false, true),
         R"(tar -c  "--exclude=Cache*" "--exclude=*.MOV" -f "/var/tmp/stowhaven/Photos.tbz" )"
         R"("/var/mobile/Media/DCIM" "/var/mobile/Media/PhotoData")"},
        // A folder without a file of its tweak hands tar an empty name, which it reports and passes by.
        {BackupCommands::folderArchive(t + "/Themes.tbz", "/Library/Themes", ""),
         R"(tar -cjf "/var/tmp/stowhaven/Themes.tbz" "/Library/Themes" "")"},
        {BackupCommands::nestedArchive(t + "/Ringtones.tar", t + "/Ringtones.tbz"),
         R"(tar -cf - "/var/tmp/stowhaven/Ringtones.tar" | bzip2 -c --best > "/var/tmp/stowhaven/Ringtones.tbz"; )"
         R"(rm -f "/var/tmp/stowhaven/Ringtones.tar")"},
        {BackupCommands::applicationArchive(t + "/App.tbz", kDocuments, kLibrary),
         R"(tar -cjf "/var/tmp/stowhaven/App.tbz" "/var/mobile/Containers/Data/Application/7A1D/Documents" )"
         R"("/var/mobile/Containers/Data/Application/7A1D/Library" "--exclude=Caches" "--exclude=Cookies")"},
        {BackupCommands::split(t, 20, t + "/Notes.tbz", "NOTES"),
         R"(cd "/var/tmp/stowhaven" ; "split" -b 20M -d -a 3 "/var/tmp/stowhaven/Notes.tbz" "NOTES"-;)"
         R"(\ls -1a "NOTES"-* > "NOTES".idx; rm -f "/var/tmp/stowhaven/Notes.tbz")"},
        {BackupCommands::aptGetUpdate(t + "/debs", t + "/1.txt"),
         "apt-get update -o dir::cache=/var/tmp/stowhaven/debs 1> /var/tmp/stowhaven/1.txt"},
        {BackupCommands::aptGetDownload("com.foo", t + "/debs", t + "/2.txt"),
         "apt-get install -dy --force-yes --reinstall com.foo -o dir::cache=/var/tmp/stowhaven/debs 1> "
         "/var/tmp/stowhaven/2.txt"},
        {RestoreCommands::joinParts(t, "NOTES", "Notes"),
         R"(cd "/var/tmp/stowhaven"; cat NOTES-??? >> Notes.tbz; rm -f NOTES-??? NOTES.idx)"},
        {RestoreCommands::extract(t + "/Notes.tbz", "/", t + "/list"),
         R"(tar -xf "/var/tmp/stowhaven/Notes.tbz" -C "//" --no-same-owner --no-same-permissions )"
         R"(--no-recursion --no-wildcards --verbatim-files-from -T "/var/tmp/stowhaven/list")"},
        {RestoreCommands::giveToMobile({"/var/mobile/Media/DCIM", "/Library/Themes"}),
         R"(chown -R mobile:mobile "/var/mobile/Media/DCIM" "/Library/Themes")"},
        {FileCipher::encryptCommand("/var/tmp/CONTACTS.tar", t + "/x1"),
         R"((openssl enc -e -a -salt -aes-256-cbc -in "/var/tmp/CONTACTS.tar" -k ")" + key +
             R"(" -out "/var/tmp/stowhaven/x1") && (mv "/var/tmp/stowhaven/x1" "/var/tmp/CONTACTS.tar"))"},
        {FileCipher::decryptCommand("/var/tmp/cydiaApps.uue", t + "/x2"),
         R"((openssl enc -d -a -salt -aes-256-cbc -in "/var/tmp/cydiaApps.uue" -k ")" + key +
             R"(" -out "/var/tmp/stowhaven/x2") && (mv "/var/tmp/stowhaven/x2" "/var/tmp/cydiaApps.uue"))"},
    };
    for (const Row& row : rows) EXPECT_EQ(row.made, row.expected);
}

// The double-quoted word of a command line that starts as ` "PREFIX`, as it stands there.
std::string quotedWordStarting(const std::string& command, const std::string& prefix) {
    const std::size_t start = command.rfind(" \"" + prefix);
    return start == std::string::npos ? "" : command.substr(start + 1);
}

TEST(CommandLinesTest, HostileNamesReachTheShellAsPlainText) {
    // A backslash before a dollar, and one at the very end, catch a backslash left unescaped.
    const std::string hostile = R"(/var/mobile/Library/Preferences/a "b" $(echo x) `echo y` c\$HOME d\)";
    for (const char* root : {"/", "/srv/devices/phone"}) {
        SCOPED_TRACE(root);
        test::DeviceRootScope device(root);
        const bool onDevice = std::string(root) == "/";
        // tar takes members relative to another root; chown takes the path on the host.
        const std::string member = onDevice ? hostile : hostile.substr(1);
        const std::string hostPath = onDevice ? hostile : root + hostile;
        const std::pair<std::string, std::string> commands[] = {
            {BackupCommands::createArchive("/t/a.tbz", false, hostile), member},
            {BackupCommands::updateArchive("/t/a", {hostile}), member},
            {BackupCommands::folderArchive("/t/a.tbz", "/Library/Themes", hostile), member},
            {RestoreCommands::giveToMobile({hostile}), hostPath},
        };
        for (const auto& [command, name] : commands) {
            SCOPED_TRACE(command);
            const std::string word = quotedWordStarting(command, name.substr(0, name.find(' ')));
            ASSERT_FALSE(word.empty());
            // The shell reads the word back as the very name, running and expanding nothing.
            EXPECT_EQ(test::runCommand("printf '%s' " + word), name);
        }
    }
    // The archive and the name of the parts are quoted alike.
    test::DeviceRootScope device("/");
    const std::string split = BackupCommands::split("/t", 1, "/t/$(echo x).tbz", "`echo y`");
    EXPECT_NE(split.find(R"("/t/\$(echo x).tbz")"), std::string::npos) << split;
    EXPECT_NE(split.find(R"("\`echo y\`"-)"), std::string::npos) << split;
}

// What double quotes make of a value is shown with the real shell in ShellTest.
TEST(ShellQuoteTest, PackageIdentifiersHoldOnlyTheirOwnCharacters) {
    for (const char* identifier : {"com.example.tweak", "libstdc++", "apt7-lib", "my_tweak", "A1"}) {
        EXPECT_EQ(ShellQuote::packageIdentifier(identifier), identifier);
    }
    for (const char* hostile : {"", "a b", "a;reboot", "$(reboot)", "`reboot`", "a\nb", "a|b", "a>b", "-o", "é"}) {
        EXPECT_FALSE(ShellQuote::packageIdentifier(hostile)) << hostile;
    }
}

TEST(ShellQuoteTest, PlainPathsHoldNothingTheShellWouldRead) {
    for (const char* path : {"/var/mobile/Library/Preferences/a.plist", "/x/2024-01-01_10~00~00/DEBS", "/a+b"}) {
        EXPECT_EQ(ShellQuote::plainPath(path), path);
    }
    for (const char* hostile : {"", "/a b", "/a;reboot", "/$(reboot)", "/a`b`", "~/x", "-rf", "/a*", "/a\nb", "/'a'"}) {
        EXPECT_FALSE(ShellQuote::plainPath(hostile)) << hostile;
    }
}

}  // namespace
}  // namespace stowhaven
