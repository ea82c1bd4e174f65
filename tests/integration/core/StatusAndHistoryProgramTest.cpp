// "stowhaven status", "history" and "storage" on a sandbox device with local storage.

#include "archive/HistoryText.h"
#include "core/BackupSession.h"
#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "storage/StorageLayout.h"
#include "support/ProgramRun.h"
#include "support/SandboxDevice.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace stowhaven {
namespace {

constexpr const char* kStorageFolder = "/var/mobile/Library/Preferences/Stowhaven";

class StatusAndHistoryProgramTest : public ::testing::Test {
protected:
    StatusAndHistoryProgramTest() {
        EXPECT_EQ(device_.run("settings AutoScanPkgEnabled true").status, 0);
        FileManager::createDirectory(device_.path(kStorageFolder), true);
    }

    // A session of that date with that title and one package, on the device's local storage.
    void store(double date, const std::string& title) const {
        const test::SupervisorScope scope(device_.root());
        auto session = std::make_shared<BackupSession>();
        session->setSessionDate(Date(date));
        session->setTitle(title);
        session->setRawData("Tweak\tcom.example.tweak\t1.0\tme\tTweaks\tmobilesubstrate\n");
        FileManager::writeFile(device_.path(kStorageFolder) + "/" + StorageLayout::historyFileName(Date(date)),
                               *HistoryText::encode(ArchiveValue(session)));
    }

    const test::SandboxDevice device_{"minimal"};
};

TEST_F(StatusAndHistoryProgramTest, TheStatusShowsTheDeviceTheStorageAndTheNewestSession) {
    store(700000000, "Before the upgrade");
    store(700086400, "After the upgrade");
    const auto outcome = device_.run("status --json");
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    const auto status = nlohmann::json::parse(outcome.output);
    EXPECT_EQ(status["storage"]["type"], 5);
    EXPECT_EQ(status["session"]["title"], "After the upgrade");
    EXPECT_EQ(status["session"]["packages"], 1);
    EXPECT_EQ(status["message"], nullptr);
    EXPECT_EQ(status["status"][1], "- 4/4 Cydia packages") << status.dump();
}

TEST_F(StatusAndHistoryProgramTest, WithoutAHistoryTheStatusSaysSo) {
    const auto outcome = device_.run("status");
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_NE(outcome.output.find("Current session: none\nNo previous backup was found."), std::string::npos)
        << outcome.output;
}

// Two of them a fifth of a second apart, in adjacent seconds: each has a stamp of its own,
// so that neither can be hidden from a restore.
TEST_F(StatusAndHistoryProgramTest, TheHistoryListsEverySessionNewestFirst) {
    store(699999999.9, "Just before");
    store(700000000.1, "First");
    store(700086400, "Second");
    store(700172800, "Third");
    const auto outcome = device_.run("history --json");
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    const auto history = nlohmann::json::parse(outcome.output);
    ASSERT_EQ(history.size(), 4u) << history.dump();
    EXPECT_EQ(history[0]["title"], "Third");
    EXPECT_EQ(history[2]["title"], "First");
    EXPECT_EQ(history[2]["date"], "2023-03-08T20:26:40.100Z");
    EXPECT_EQ(history[3]["title"], "Just before");

    const auto text = device_.run("history");
    EXPECT_NE(text.output.find("4 session(s) on local storage\n2023-03-10T20:26:40Z  \"Third\""), std::string::npos)
        << text.output;
}

TEST_F(StatusAndHistoryProgramTest, TheStorageCommandShowsTheEngineAndChangesItOnlyToOneThatExists) {
    const auto shown = device_.run("storage");
    ASSERT_EQ(shown.status, 0) << shown.errors;
    EXPECT_NE(shown.output.find("Storage: local storage (type 5)\nEngines in this build: addressbook, dropbox, "
                                "sugarsync, onedrive, box, local, ftp, gdrive, owncloud\n"),
              std::string::npos)
        << shown.output;
    EXPECT_NE(shown.output.find("Free space: "), std::string::npos);
    EXPECT_NE(shown.output.find("Folder: " + device_.path(kStorageFolder)), std::string::npos);

    ASSERT_EQ(device_.run("settings CurrentStorageType 0").status, 0);
    const auto used = device_.run("storage use local");
    ASSERT_EQ(used.status, 0) << used.errors;
    EXPECT_EQ(used.output, "Storage is now local storage (type 5).\n");
    EXPECT_EQ(device_.run("storage use floppy").status, 2);
    const auto unlinked = device_.run("storage use sugarsync");
    EXPECT_EQ(unlinked.status, 1) << "no login to take it with";
    EXPECT_NE(unlinked.errors.find("storage stays local storage"), std::string::npos) << unlinked.errors;
    EXPECT_EQ(device_.run("settings CurrentStorageType").output, "5\n");
}

// A stored engine that can't start (SugarSync with no account linked) gives way to local
// storage for the run, as a backup does, and the user is told; the stored choice stays.
TEST_F(StatusAndHistoryProgramTest, WithAStoredEngineThatCantStartTheCommandsWorkOnLocalStorage) {
    store(700000000, "First");
    store(700086400, "Second");
    ASSERT_EQ(device_.run("settings CurrentStorageType 2").status, 0);
    const std::string warning = "SugarSync™ storage can't be used now (No SugarSync account is linked)";
    const auto told = [&](const test::ProgramOutcome& outcome) {
        return outcome.errors.find(warning) != std::string::npos;
    };

    const auto status = device_.run("status --json");
    ASSERT_EQ(status.status, 0) << status.errors;
    EXPECT_TRUE(told(status)) << status.errors;
    const auto shown = nlohmann::json::parse(status.output);
    EXPECT_EQ(shown["storage"]["type"], 5);
    EXPECT_EQ(shown["session"]["title"], "Second");

    const auto history = device_.run("history --json");
    ASSERT_EQ(history.status, 0) << history.errors;
    EXPECT_TRUE(told(history)) << history.errors;
    EXPECT_EQ(nlohmann::json::parse(history.output).size(), 2u);

    const std::string card = device_.path("/var/mobile/Second.vcf");
    const auto share = device_.run("share vcard " + ShellQuote::path(card));
    ASSERT_EQ(share.status, 0) << share.errors;
    EXPECT_TRUE(told(share)) << share.errors;
    EXPECT_NE(FileManager::contentsOfFile(card).value_or("").find("BEGIN:VCARD"), std::string::npos);

    EXPECT_EQ(device_.run("settings CurrentStorageType").output, "2\n");
}

}  // namespace
}  // namespace stowhaven
