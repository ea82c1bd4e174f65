#include "platform/FileManager.h"
#include "platform/PreferenceStore.h"
#include "platform/ShellQuote.h"
#include "support/ProgramRun.h"
#include "support/SandboxDevice.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <limits>

namespace stowhaven {
namespace {

using Array = PlistValue::Array;

using Outcome = test::ProgramOutcome;

// The program's settings, its start and the URLs and files handed to it, on a device of
// the test's own.
class SettingsProgramTest : public ::testing::Test {
protected:
    // Runs a command that must succeed and answers what it printed.
    std::string output(const std::string& arguments) const {
        const Outcome outcome = device_.run(arguments);
        EXPECT_EQ(outcome.status, 0) << arguments << ": " << outcome.errors;
        return outcome.output;
    }
    nlohmann::json listing(const std::string& options = "") const {
        return nlohmann::json::parse(output("settings --json " + options));
    }
    static const nlohmann::json& entry(const nlohmann::json& list, const std::string& key) {
        const auto found = std::find_if(list.begin(), list.end(), [&](const auto& item) { return item["key"] == key; });
        if (found == list.end()) throw std::out_of_range(key + " is not listed");
        return *found;
    }

    std::string settingsFile(const std::string& user = "mobile") const {
        return device_.path("/var/" + user + "/Library/Preferences/com.larkmoor.stowhaven.plist");
    }
    std::optional<std::string> settingsBytes() const { return FileManager::contentsOfFile(settingsFile()); }

    test::SandboxDevice device_{"minimal"};
};

TEST_F(SettingsProgramTest, AFirstStartStoresThePathsThatMustExistAndRunsOnLocalStorage) {
    ASSERT_FALSE(FileManager::fileExists(settingsFile()));

    EXPECT_EQ(output("settings CurrentStorageType"), "5\n");

    const PreferenceStore stored(settingsFile());
    EXPECT_EQ(stored.string("DropboxStoragePath"), "/Stowhaven");
    EXPECT_EQ(stored.string("LocalStoragePath"), device_.root() + "/var/mobile/Library/Preferences/Stowhaven");
    EXPECT_EQ(stored.array("AppleLanguages"), (Array{"en"}));
    EXPECT_FALSE(stored.keyExists("CurrentStorageType")) << "registered defaults are not written";
    EXPECT_EQ(FileManager::attributesOfItem(settingsFile())->permissions & 0777, 0600u);
}

TEST_F(SettingsProgramTest, TheListingShowsEverySettingWithItsDefaultAndHidesSecrets) {
    output("settings FTPHost ftp.example.org");
    output("settings FTPPassword hunter2");

    const nlohmann::json list = listing();
    EXPECT_EQ(entry(list, "CurrentStorageType"),
              nlohmann::json({{"key", "CurrentStorageType"}, {"kind", "integer"}, {"value", 5}, {"default", true}}));
    EXPECT_EQ(entry(list, "MinDeviceBatteryLevel")["kind"], "float");
    EXPECT_EQ(entry(list, "DropboxStoragePath")["value"], "/Stowhaven");
    EXPECT_EQ(entry(list, "FTPHost")["value"], "ftp.example.org");
    EXPECT_EQ(entry(list, "FTPPassword")["value"], "********");
    EXPECT_THROW(entry(list, "FTPLogin"), std::out_of_range) << "engine keys show only when stored";

    EXPECT_EQ(entry(listing("--show-secrets"), "FTPPassword")["value"], "hunter2");
    EXPECT_EQ(output("settings FTPPassword"), "********\n");
    EXPECT_EQ(output("settings FTPPassword --show-secrets"), "hunter2\n");
    const std::string table = output("settings");
    EXPECT_EQ(table.find("hunter2"), std::string::npos);
    EXPECT_NE(table.find("SoundEnabled"), std::string::npos);
}

TEST_F(SettingsProgramTest, SettingAValueChecksItsKindAndWritesNothingOnARefusal) {
    output("settings");
    const auto before = settingsBytes();
    ASSERT_TRUE(before);

    // A count that could pass for "remove everything" past 32 bits, or as less than nothing.
    for (const char* refused :
         {"CurrentStorageType abc", "CurrentStorageType 1.5", "MinDeviceBatteryLevel low", "SoundEnabled maybe",
          "LAST_RESTORE_DATE 2015-01-01", "NoSuchSetting 1", "NoSuchSetting", "MaximumBackupsInLocal -1",
          "MaximumBackupsInLocal 4294967295", "MaximumBackupsInLocal 2147483648", "MaximumBackupsInLocal -0",
          "MaximumBackupsInOwnCloud 18446744073709551615", "SplitSizeInMegaBytes 0", "SplitSizeInMegaBytes -20",
          "CurrentStorageType 9", "CurrentStorageType -1", "Weekday 8", "RepeatSchedule -2"}) {
        SCOPED_TRACE(refused);
        const Outcome outcome = device_.run(std::string("settings ") + refused);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.output, "");
        const std::string key = std::string(refused).substr(0, std::string(refused).find(' '));
        EXPECT_NE(outcome.errors.find(key), std::string::npos) << "the key is named: " << outcome.errors;
        EXPECT_EQ(settingsBytes(), before);
    }

    output("settings MinDeviceBatteryLevel 1.5");
    output("settings RepeatSchedule -1");
    output("settings MaximumBackupsInLocal 2147483647");
    output("settings SoundEnabled NO");
    EXPECT_EQ(output("settings MinDeviceBatteryLevel"), "1.5\n");
    EXPECT_EQ(output("settings RepeatSchedule"), "-1\n");
    EXPECT_EQ(output("settings MaximumBackupsInLocal"), "2147483647\n");
    EXPECT_EQ(entry(listing(), "SoundEnabled"),
              nlohmann::json({{"key", "SoundEnabled"}, {"kind", "boolean"}, {"value", false}, {"default", false}}));
}

// The default lists of the selection screens: set from the command line, printed as JSON,
// set again from that output, and removed so that everything counts as selected again.
TEST_F(SettingsProgramTest, AListRoundTripsThroughItsJsonAndCanBeClearedBackToAbsent) {
    const nlohmann::json sources = {"http://apt.example.org/", "it's \"quoted\" $HOME `id`", "ünï cödé", ""};
    output("settings DefaultSources_Backup " + ShellQuote::quoted(sources.dump()));
    const nlohmann::json printed = entry(listing(), "DefaultSources_Backup")["value"];
    EXPECT_EQ(printed, sources);
    output("settings DefaultSources_Backup " + ShellQuote::quoted(printed.dump()));
    EXPECT_EQ(nlohmann::json::parse(output("settings DefaultSources_Backup")), sources);
    EXPECT_EQ(PreferenceStore(settingsFile()).array("DefaultSources_Backup")->size(), sources.size());

    const auto before = settingsBytes();
    // Nothing but strings in one flat list; the saved hosts, with their passwords, not at all.
    for (const std::string& refused : {std::string("[1]"), std::string(R"([["a"]])"), std::string(R"({"a":"b"})"),
                                       std::string(R"("a")"), std::string(R"(["a"] ["b"])"), std::string("null"),
                                       std::string(R"(["a",])"), std::string(100000, '['), std::string("[]x")}) {
        const Outcome outcome = device_.run("settings DefaultApps_Restore " + ShellQuote::quoted(refused));
        EXPECT_EQ(outcome.status, 2) << refused.substr(0, 20);
        EXPECT_EQ(settingsBytes(), before);
    }
    EXPECT_EQ(device_.run("settings FTPHosts '[]'").status, 2);
    EXPECT_EQ(device_.run("settings --unset").status, 2);
    EXPECT_EQ(device_.run("settings --unset DefaultSources_Backup '[]'").status, 2);

    output("settings --unset DefaultSources_Backup");
    EXPECT_EQ(device_.run("settings DefaultSources_Backup").status, 1) << "absent again";
    EXPECT_FALSE(PreferenceStore(settingsFile()).keyExists("DefaultSources_Backup"));
}

// As an older program or a hand may have left them: a count below 0 or past 32 bits.
TEST_F(SettingsProgramTest, StoredCountsAndSizesOutsideTheirRangeReadAsTheNearestSafeOnes) {
    PreferenceStore stored(settingsFile());
    ASSERT_TRUE(stored.set("MaximumBackupsInLocal", -1));
    ASSERT_TRUE(stored.set("MaximumBackupsInFTP", std::numeric_limits<std::uint64_t>::max()));
    ASSERT_TRUE(stored.set("SplitSizeInMegaBytes", -5));

    const Outcome outcome = device_.run("--verbose status");
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_NE(output("storage").find("Backups kept: all\n"), std::string::npos);
    for (const char* line : {"MaximumBackupsInLocal holds -1, outside 0 to 2147483647: read as 0",
                             "MaximumBackupsInFTP holds 9223372036854775807, outside 0 to 2147483647: read as "
                             "2147483647",
                             "SplitSizeInMegaBytes holds -5, outside 1 to 2147483647: read as 1"}) {
        EXPECT_NE(outcome.errors.find(line), std::string::npos) << line;
    }
}

// The rollover after each backup, with the real local storage: the oldest go, never more
// than the count beyond those to keep, and never the session just stored, even beside a
// session dated ahead of the clock.
TEST_F(SettingsProgramTest, ThreeBackupsWithTwoToKeepLeaveTheTwoNewestAndNeverTheOneJustStored) {
    output("settings AutoScanPkgEnabled true");
    const std::string storage = device_.path("/var/mobile/Library/Preferences/Stowhaven");
    // The history files on the storage, oldest first: their names are the sessions' stamps.
    const auto historyFiles = [&] {
        auto names = FileManager::contentsOfDirectory(storage).value_or(std::vector<std::string>{});
        std::erase_if(names, [](const std::string& name) { return !name.ends_with(".stowhvn"); });
        std::sort(names.begin(), names.end());
        return names;
    };
    const auto backUp = [&](const std::string& title) {
        const Outcome outcome = device_.run("backup --yes --title " + title);
        EXPECT_EQ(outcome.status, 0) << title << ": " << outcome.errors;
        return historyFiles();
    };

    // A count below 0 once meant one session more than there are to remove.
    ASSERT_TRUE(PreferenceStore(settingsFile()).set("MaximumBackupsInLocal", -1));
    backUp("First");
    const auto two = backUp("Second");
    ASSERT_EQ(two.size(), 2u);

    output("settings MaximumBackupsInLocal 2");
    const auto three = backUp("Third");
    ASSERT_EQ(three.size(), 2u);
    EXPECT_EQ(three[0], two[1]);
    EXPECT_GT(three[1], two[1]);

    const std::string ahead = "2099-01-01_00~00~00.stowhvn";
    ASSERT_TRUE(FileManager::writeFile(storage + "/" + ahead, *FileManager::contentsOfFile(storage + "/" + three[1])));
    output("settings MaximumBackupsInLocal 1");
    const auto four = backUp("Fourth");
    ASSERT_EQ(four.size(), 1u) << "all but one go";
    // Named apart from the earlier ones rather than after them: the host's clock may step back.
    EXPECT_TRUE(four[0] != three[0] && four[0] != three[1] && four[0] != ahead) << "the session just stored stays";
}

TEST_F(SettingsProgramTest, OpenRunsTheAutomaticBackupForThisRunOnlyAndOffersAFileForImport) {
    const Outcome nothingToScan = device_.run("open stowhaven://autobackup");
    EXPECT_EQ(nothingToScan.status, 1) << "every scan is off at a first start";
    output("settings AutoScanPkgEnabled true");
    const Outcome autobackup = device_.run("open stowhaven://autobackup");
    EXPECT_EQ(autobackup.status, 0) << autobackup.errors;
    EXPECT_NE(autobackup.output.find("Backup done on local storage"), std::string::npos);
    EXPECT_EQ(output("settings AutobackupEnabled"), "false\n");

    const std::string history = device_.path("/var/mobile/Downloads/2015-01-01_10~00~00.stowhvn");
    ASSERT_TRUE(FileManager::createDirectory(device_.path("/var/mobile/Downloads"), true));
    ASSERT_TRUE(FileManager::writeFile(history, "history"));
    const Outcome unanswered = device_.run("open " + ShellQuote::path(history));
    EXPECT_EQ(unanswered.status, 2);
    EXPECT_NE(unanswered.errors.find("--yes"), std::string::npos) << unanswered.errors;
    EXPECT_EQ(output("open --yes " + ShellQuote::path(history)), "Nothing was imported.\n")
        << "the file holds no session";

    EXPECT_EQ(device_.run("open stowhaven://restore").status, 2);
    EXPECT_EQ(device_.run("open " + ShellQuote::path(device_.path("/var/mobile/Downloads/missing.stowhvn"))).status, 2);
}

// A reset asked for in the settings ends the next start once its alert is told, and the
// command of that run never runs.
TEST_F(SettingsProgramTest, AResetEndsTheStartWithTheCloudServicesOrTheSettingsOfBothUsersGone) {
    ASSERT_TRUE(FileManager::createDirectory(device_.path("/var/root/Library/Preferences"), true));
    ASSERT_TRUE(FileManager::writeFile(settingsFile("root"), "root's settings"));
    const auto resetRun = [&] {
        const Outcome reset = device_.run("settings CurrentStorageType 3");
        EXPECT_EQ(reset.status, 0) << reset.errors;
        EXPECT_NE(reset.errors.find("Settings reset"), std::string::npos) << "the alert is told: " << reset.errors;
    };

    output("settings SoundEnabled false");
    output("settings CurrentStorageType 6");
    output("settings ResetCloudServices true");
    resetRun();
    EXPECT_EQ(output("settings CurrentStorageType"), "5\n") << "back on local storage";
    EXPECT_EQ(output("settings ResetCloudServices"), "false\n");
    EXPECT_EQ(output("settings SoundEnabled"), "false\n") << "the other settings stay";
    EXPECT_TRUE(FileManager::fileExists(settingsFile("root")));

    output("settings ResetSettings true");
    resetRun();
    EXPECT_FALSE(FileManager::fileExists(settingsFile()));
    EXPECT_FALSE(FileManager::fileExists(settingsFile("root")));
    EXPECT_EQ(output("settings CurrentStorageType"), "5\n");
    EXPECT_EQ(output("settings SoundEnabled"), "true\n");
}

}  // namespace
}  // namespace stowhaven
