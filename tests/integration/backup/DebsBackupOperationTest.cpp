// The capture of the packages' .deb files: fetched by the real apt-get from the sandbox
// device's own repository into the program's cache, and stored in the session's "DEBS".

#include "backup/DebsBackupOperation.h"
#include "core/BackupSession.h"
#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "platform/FileManager.h"
#include "platform/TemporaryDirectory.h"
#include "storage/StorageLayout.h"
#include "storage/local/LocalStorageHelper.h"
#include "support/CatalogueFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace stowhaven {
namespace {

// 2023-03-07 about noon.
constexpr double kSessionDate = 700000000;

std::vector<std::string> sorted(std::vector<std::string> names) {
    std::sort(names.begin(), names.end());
    return names;
}

class DebsBackupOperationTest : public test::CatalogueFixture {
protected:
    DebsBackupOperationTest() {
        gBackupDebsEnabled = true;
        // The device's own packages are what makes a capture worth doing at all.
        CydiaFileManager::shared().loadPackages();
        // Nothing else runs commands once the start-up clean-up is over.
        CydiaFileManager::shared().waitForCleanUpJobs();
    }

    // Runs the capture for a new session of those package lines, with the commands of
    // the run alone on record.
    std::shared_ptr<DebsBackupOperation> captureFor(const std::string& rawData) {
        auto session = std::make_shared<BackupSession>();
        session->setSessionDate(Date(kSessionDate));
        session->setRawData(rawData);
        CydiaFileManager::shared().processBackupData({session}, false);
        scope_.services.shell.commands.clear();
        auto operation = std::make_shared<DebsBackupOperation>();
        operation->start();
        return operation;
    }

    static std::string sessionDirectory() {
        return localStoragePath() + "/" + StorageLayout::stamp(Date(kSessionDate));
    }
    static std::string cachedArchives() { return TemporaryDirectory::path() + "/debs/archives"; }

    // A file in the cache as if an earlier download had left it there.
    static void placeInCache(const std::string& name) {
        std::filesystem::create_directories(cachedArchives());
        ASSERT_TRUE(FileManager::writeFile(cachedArchives() + "/" + name, "not really a package"));
    }
};

TEST_F(DebsBackupOperationTest, EachPackagesFileIsStoredUnderItsCleanedNameAndOnlyForTheDevicesArchitecture) {
    placeInCache("Tweak_1:2.3_iphoneos-arm.deb");
    placeInCache("newer_1.0_iphoneos-arm64.deb");

    const auto operation = captureFor(
        "Extra\tcom.example.extra\t1.0\tme\tTweaks\tmobilesubstrate\n"
        "PreferenceLoader\tpreferenceloader\t2.2.3\tme\tSystem\tmobilesubstrate\n");

    EXPECT_EQ(operation->operationResult(), 0);
    EXPECT_EQ(commandsStartingWith("apt-get install ").size(), 2u);
    const auto stored = FileManager::contentsOfDirectory(sessionDirectory() + "/DEBS");
    ASSERT_TRUE(stored);
    EXPECT_EQ(sorted(*stored),
              (std::vector<std::string>{"com.example.extra_1.0_iphoneos-arm.deb",
                                        "preferenceloader_2.2.3_iphoneos-arm.deb", "tweak_1_2.3_iphoneos-arm.deb"}));
    EXPECT_EQ(FileManager::contentsOfFile(sessionDirectory() + "/DEBS/com.example.extra_1.0_iphoneos-arm.deb"),
              FileManager::contentsOfFile(device_.path("/private/var/lib/sandbox-repository/"
                                                       "com.example.extra_1.0_iphoneos-arm.deb")))
        << "the repository's own file";
    EXPECT_TRUE(FileManager::fileExists(cachedArchives() + "/newer_1.0_iphoneos-arm64.deb"))
        << "another architecture's file stays where it was";

    // What apt-get printed of each package, which no one takes for a failure.
    const std::string said = operation->errorMsg();
    EXPECT_NE(said.find("com.example.extra 1.0"), std::string::npos) << said;
    EXPECT_NE(said.find("preferenceloader 2.2.3"), std::string::npos) << said;
}

TEST_F(DebsBackupOperationTest, LinesWithoutAPackageNameNeverReachTheShell) {
    const std::string mark = device_.path("/pwned");
    const std::vector<std::string> refused = {"x; touch " + mark + "-chained", "$(touch " + mark + "-substituted)",
                                              "`touch " + mark + "-quoted`", "--purge"};
    std::string rawData = "Unnamed\t\t1.0\tme\tTweaks\nBlank\t   \t1.0\n";
    for (const std::string& identifier : refused) rawData += "Tweak\t" + identifier + "\t1.0\n";

    const auto operation = captureFor(rawData);

    EXPECT_EQ(operation->operationResult(), 0);
    EXPECT_EQ(commandsStartingWith("apt-get update ").size(), 1u);
    EXPECT_TRUE(commandsStartingWith("apt-get install ").empty()) << "no download was asked for";
    for (const std::string& command : scope_.services.shell.commands) {
        EXPECT_EQ(command.find(mark), std::string::npos) << command;
        EXPECT_EQ(command.find("--purge"), std::string::npos) << command;
    }
    for (const char* kind : {"-chained", "-substituted", "-quoted"}) {
        EXPECT_FALSE(FileManager::fileExists(mark + kind)) << kind;
    }
    const std::string said = operation->errorMsg();
    for (const std::string& identifier : refused) {
        EXPECT_NE(said.find("<" + identifier + ">"), std::string::npos) << "each refusal is told: " << said;
    }
    EXPECT_EQ(FileManager::contentsOfDirectory(sessionDirectory() + "/DEBS"), std::vector<std::string>{});
}

}  // namespace
}  // namespace stowhaven
