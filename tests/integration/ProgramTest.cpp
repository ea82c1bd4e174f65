#include "archive/HistoryText.h"
#include "platform/FileManager.h"
#include "platform/Shell.h"
#include "platform/ShellQuote.h"
#include "support/ProgramRun.h"
#include "support/SampleSessions.h"
#include "support/SandboxDevice.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>

namespace stowhaven {
namespace {

using Outcome = test::ProgramOutcome;
using test::runProgram;

nlohmann::json catalogueOf(const test::SandboxDevice& device) {
    const Outcome listing = device.run("packages --json");
    EXPECT_EQ(listing.status, 0) << listing.output;
    return nlohmann::json::parse(listing.output);
}

nlohmann::json packageNamed(const nlohmann::json& catalogue, const std::string& identifier) {
    for (const auto& package : catalogue) {
        if (package["packageName"] == identifier) return package;
    }
    return nullptr;
}

void writeSystemVersion(const test::SandboxDevice& device, const std::string& version) {
    const std::string plist =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
        "<plist version=\"1.0\"><dict><key>ProductVersion</key><string>" +
        version + "</string></dict></plist>\n";
    std::ofstream(device.path("/System/Library/CoreServices/SystemVersion.plist")) << plist;
}

class ProgramTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { device_ = new test::SandboxDevice("demo"); }
    static void TearDownTestSuite() { delete device_; }
    static test::SandboxDevice* device_;
};

test::SandboxDevice* ProgramTest::device_ = nullptr;

// Every package dpkg lists for the root but the removed, refused and system ones, by section
// (Addons, Archiving, Development, Security, System, Terminal Support, Themes, Tweaks,
// Utilities), then by display name: "bzip2" before "GNU Tar".
TEST_F(ProgramTest, TheDemoDevicesCatalogueComesBySectionThenName) {
    const nlohmann::json catalogue = catalogueOf(*device_);
    std::vector<std::string> order;
    for (const auto& package : catalogue) order.push_back(package["packageName"]);
    const std::vector<std::string> expected = {"net.tinkerlane.fiveicondock",
                                               "bzip2",
                                               "tar",
                                               "mobilesubstrate",
                                               "openssl",
                                               "libactivator",
                                               "preferenceloader",
                                               "winterboard",
                                               "bash",
                                               "net.tinkerlane.theme.paperlight",
                                               "com.fuyuchi.flex2",
                                               "net.tinkerlane.quietbadges",
                                               "com.filippobiga.springtomize3",
                                               "com.aerialx.ishshit"};
    EXPECT_EQ(order, expected);

    EXPECT_EQ(packageNamed(catalogue, "bzip2"), nlohmann::json::parse(R"json({
        "name": "bzip2", "packageName": "bzip2", "version": "1.0.6-1",
        "maintainerName": "Sandbox Packager <packages@sandbox.example>", "sectionName": "Archiving",
        "dependsList": null, "firmwareSpecs": null, "firmwareCompatible": false})json"))
        << "no Name: the identifier stands for it; no firmware need: not compatible";
    EXPECT_EQ(packageNamed(catalogue, "winterboard"), nlohmann::json::parse(R"json({
        "name": "WinterBoard", "packageName": "winterboard", "version": "0.9.3919",
        "maintainerName": "Sandbox Packager <packages@sandbox.example>", "sectionName": "System",
        "dependsList": ["com.larkmoor.prefbundles", "mobilesubstrate", "preferenceloader"],
        "firmwareSpecs": "firmware (>= 4.0)", "firmwareCompatible": true})json"));
    EXPECT_EQ(packageNamed(catalogue, "net.tinkerlane.fiveicondock")["sectionName"], "Addons (SpringBoard)");
    EXPECT_EQ(packageNamed(catalogue, "com.filippobiga.springtomize3")["firmwareCompatible"], true)
        << "8.1.2 against >= 7.0 compares 812 with 70";

    const Outcome table = device_->run("packages");
    ASSERT_EQ(table.status, 0) << table.output;
    for (const char* line : {"\nArchiving (2)\n", "\nTweaks (3)\n", "14 package(s) in 9 section(s)"}) {
        EXPECT_NE(table.output.find(line), std::string::npos) << line << table.output;
    }
}

// The comparison's rules stand in the package file's own test.
TEST_F(ProgramTest, FirmwareIsJudgedAgainstTheDevicesOwnSystemVersion) {
    test::SandboxDevice older(*device_, "older");
    writeSystemVersion(older, "6.1");
    EXPECT_EQ(packageNamed(catalogueOf(older), "com.filippobiga.springtomize3")["firmwareCompatible"], false)
        << "61 against >= 7.0: 70";
}

TEST_F(ProgramTest, TheRootMayComeFromTheEnvironment) {
    const Outcome listing = runProgram("packages", "STOWHAVEN_ROOT=" + ShellQuote::path(device_->root()) + " ");
    ASSERT_EQ(listing.status, 0) << listing.output;
    EXPECT_NE(listing.output.find("mobilesubstrate"), std::string::npos);
    EXPECT_EQ(listing.output.find("coreutils"), std::string::npos) << "the host's own packages stay out";
}

TEST_F(ProgramTest, RefusesToRunWithoutRoot) {
    const Outcome outcome = device_->run("packages", "setpriv --reuid=65534 --regid=65534 --clear-groups ");
    EXPECT_EQ(outcome.status, 255);
    EXPECT_NE(outcome.errors.find("must run as root"), std::string::npos) << outcome.errors;
}

TEST_F(ProgramTest, RefusesARootThatIsNoFolderOrCouldBreakACommand) {
    EXPECT_EQ(runProgram("--root /nonexistent/device packages").status, 2);
    EXPECT_EQ(runProgram("--root " + ShellQuote::path(device_->root() + "/a b") + " packages").status, 2);
}

TEST_F(ProgramTest, AnswersVersionAndHelpWithoutADevice) {
    const Outcome version = runProgram("--version");
    EXPECT_EQ(version.status, 0);
    EXPECT_TRUE(version.output.starts_with("stowhaven ")) << version.output;
    const Outcome help = runProgram("--help");
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.output.find("packages"), std::string::npos);
}

// A shared session's texts reach the owner's terminal: one crafted to act on the terminal (a
// title that sets the window's name, clears the screen and writes over its own line) is shown
// with its control characters as "?", in the program's output and in its log lines alike.
TEST_F(ProgramTest, ASessionsControlCharactersNeverReachTheTerminal) {
    const auto holdsControlCharacter = [](const std::string& text) {
        return std::any_of(text.begin(), text.end(), [](char c) {
            return (static_cast<unsigned char>(c) < 0x20 && c != '\n' && c != '\t') || c == 0x7f;
        });
    };
    const test::SupervisorScope scope;
    const test::TestFolder folder;
    const auto session = test::fullSession();
    session->setTitle(std::string("\x1b]2;owned\x07\x1b[2JTrip\r  restored\x7f"));
    const std::string history = folder / "2024-09-12_08~00~00.stowhvn";
    ASSERT_TRUE(FileManager::writeFile(history, *HistoryText::encode(session)));

    const auto outcome = device_->run("--verbose inspect " + ShellQuote::path(history));

    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_NE(outcome.output.find("?]2;owned??[2JTrip?  restored?"), std::string::npos) << outcome.output;
    EXPECT_FALSE(holdsControlCharacter(outcome.output));
    EXPECT_FALSE(holdsControlCharacter(outcome.errors));
}

// On a copy of a device the program changes the copy and nothing of the machine it runs on.
TEST_F(ProgramTest, TheNetworkInterfaceOfTheMachineIsLeftAloneOnADeviceRoot) {
    const test::TestFolder folder;
    // An ifconfig of the test's own, first on the path, that writes down what it was given.
    const std::string record = folder / "ifconfig-ran";
    const std::string tool = folder / "bin/ifconfig";
    test::runCommand("mkdir " + ShellQuote::path(folder / "bin") + " && printf '#!/bin/sh\\necho \"$@\" >> %s\\n' " +
                     ShellQuote::path(ShellQuote::path(record)) + " > " + ShellQuote::path(tool) + " && chmod 755 " +
                     ShellQuote::path(tool));
    const std::string path = "PATH=" + ShellQuote::path((folder / "bin") + ":/usr/bin:/bin") + " ";
    // The program's own command line would find it there.
    test::runCommand(path + "sh -c '" + Shell::wrap("ifconfig probe") + "'");
    ASSERT_EQ(FileManager::contentsOfFile(record), "probe\n");
    ASSERT_TRUE(FileManager::removeItem(record));

    // At start and again as the settings are read.
    const auto outcome = device_->run("--verbose status", path);
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_FALSE(FileManager::fileExists(record)) << *FileManager::contentsOfFile(record);
    EXPECT_NE(outcome.errors.find("Not run on the device root <" + device_->root() +
                                  ">, as it acts on the running system: ifconfig en0 mtu 1400"),
              std::string::npos)
        << outcome.errors;
}

bool lists(const nlohmann::json& list, const std::string& key, const std::string& value) {
    return std::any_of(list.begin(), list.end(), [&](const nlohmann::json& item) { return item[key] == value; });
}

TEST_F(ProgramTest, TheDemoDeviceHasAnItemOfEveryKindInJsonAndInText) {
    const auto outcome = device_->run("items --json");
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    const nlohmann::json items = nlohmann::json::parse(outcome.output);

    EXPECT_TRUE(lists(items["applications"], "bundleIdentifier", "com.tinkerlane.tidewatch"));
    EXPECT_FALSE(lists(items["applications"], "bundleIdentifier", "com.apple.iBooks"));
    EXPECT_TRUE(lists(items["preferenceFiles"], "name", "/var/mobile/Library/Preferences/com.saurik.Cydia.plist"));
    EXPECT_TRUE(lists(items["springboardFiles"], "name", "/var/mobile/Library/SpringBoard/IconState.plist"));
    EXPECT_TRUE(lists(items["sources"], "link", "http://127.0.0.12/quillfeed/"));
    const nlohmann::json& folders = items["archivableFolders"];
    EXPECT_TRUE(lists(folders, "name", "Springtomize 3"));
    EXPECT_TRUE(lists(folders, "archiveName", "ishsh_blobs"));
    const auto clips =
        std::find_if(folders.begin(), folders.end(), [](const auto& folder) { return folder["folderType"] == 9; });
    ASSERT_NE(clips, folders.end());
    EXPECT_TRUE(lists((*clips)["contents"], "title", "Tides"));

    const auto text = device_->run("items");
    ASSERT_EQ(text.status, 0) << text.errors;
    for (const char* line : {"Applications (3)", "[ ] Lighthouse (org.harbourgames.lighthouse)  0Mb",
                             "SpringBoard files (", "Sources (5)", "[ ] Ringtones (Cydia)  /Library/Ringtones/"}) {
        EXPECT_NE(text.output.find(line), std::string::npos) << line << "\n" << text.output;
    }
}

}  // namespace
}  // namespace stowhaven
