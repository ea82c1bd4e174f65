// The restore of a session's packages onto the minimal sandbox device: installed by the
// real apt-get from the device's own repository, or from the session's .deb files by dpkg,
// into the device's package database.

#include "restore/PackagesRestoreOperation.h"

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
constexpr const char* kExtraDeb = "com.example.extra_1.0_iphoneos-arm.deb";

class PackagesRestoreOperationTest : public test::CatalogueFixture {
protected:
    PackagesRestoreOperationTest() {
        gIsBackupMode = false;
        CydiaFileManager::shared().loadPackages();
        CydiaFileManager::shared().waitForCleanUpJobs();
    }
    ~PackagesRestoreOperationTest() override { gRestoreFromDebsEnabled = false; }

    // Makes a session of those package lines the current one, which chooses the packages
    // the device lacks in that version, and runs the restore with its commands alone on
    // record.
    std::shared_ptr<PackagesRestoreOperation> restore(const std::string& rawData) {
        auto session = std::make_shared<BackupSession>();
        session->setSessionDate(Date(kSessionDate));
        session->setRawData(rawData);
        CydiaFileManager::shared().processBackupData({session}, false);
        CydiaFileManager::shared().changeCurrentBackupSessionTo(session);
        scope_.services.shell.commands.clear();
        auto operation = std::make_shared<PackagesRestoreOperation>();
        operation->start();
        return operation;
    }

    static std::shared_ptr<CydiaFile> oldPackage(const std::string& identifier) {
        for (const auto& package : CydiaFileManager::shared().oldPackages()) {
            if (package->packageName() == identifier) return package;
        }
        return nullptr;
    }
    static bool isCurrent(const std::shared_ptr<CydiaFile>& package) {
        const auto current = CydiaFileManager::shared().currentPackages();
        return std::find(current.begin(), current.end(), package) != current.end();
    }

    // "<version> <status>" of the package in the device's database, empty when it has none.
    std::string installed(const std::string& identifier) const {
        return test::runCommand("DPKG_ADMINDIR=" + device_.root() +
                                "/var/lib/dpkg dpkg-query -W -f='${Version} ${Status}' " + identifier +
                                " 2>/dev/null || true");
    }

    static std::string installLogPath() { return TemporaryDirectory::path() + "/installLog.txt"; }
};

TEST_F(PackagesRestoreOperationTest, AMissingPackageIsInstalledFromTheRepositoryAndJoinsTheDevicesList) {
    ASSERT_EQ(installed("com.example.extra"), "");

    const auto operation = restore(
        "Extra\tcom.example.extra\t1.0\tme\tTweaks\tmobilesubstrate\n"
        "Five Icon Dock\tnet.tinkerlane.fiveicondock\t1.0.2\tme\tAddons_(SpringBoard)\tmobilesubstrate\n");

    EXPECT_EQ(operation->nbPackages(), 1);
    EXPECT_EQ(installed("com.example.extra"), "1.0 install ok installed");
    const auto extra = oldPackage("com.example.extra");
    ASSERT_TRUE(extra);
    ASSERT_TRUE(extra->installLog());
    EXPECT_NE(extra->installLog()->find("Setting up com.example.extra"), std::string::npos) << *extra->installLog();
    EXPECT_TRUE(isCurrent(extra));
    EXPECT_TRUE(extra->isBackupSelected());

    const auto dock = oldPackage("net.tinkerlane.fiveicondock");
    ASSERT_TRUE(dock);
    EXPECT_FALSE(dock->installLog()) << "a package the device has in that version is not tried";
    EXPECT_EQ(commandsStartingWith("apt-get"),
              (std::vector<std::string>{
                  "apt-get update", "apt-get -y -m install com.example.extra 1>\"" + installLogPath() + "\" 2>&1"}));
    EXPECT_FALSE(FileManager::fileExists(installLogPath()));
}

TEST_F(PackagesRestoreOperationTest, APackageAptGetFindsInstalledAlreadyIsTriedOnce) {
    // Another version than the device's is chosen; apt-get has only the device's own.
    const auto operation = restore("PreferenceLoader\tpreferenceloader\t2.2.2\tme\tSystem\tmobilesubstrate\n");

    EXPECT_EQ(operation->nbPackages(), 1);
    EXPECT_EQ(commandsStartingWith("apt-get -y -m install preferenceloader ").size(), 1u);
    const auto package = oldPackage("preferenceloader");
    ASSERT_TRUE(package && package->installLog());
    EXPECT_TRUE(package->isAlreadyInstalled()) << *package->installLog();
    EXPECT_EQ(installed("preferenceloader"), "2.2.3 install ok installed");
}

TEST_F(PackagesRestoreOperationTest, IdentifiersThatAreNoPackageNamesNeverReachTheShell) {
    const std::string mark = device_.path("/pwned");
    const std::vector<std::string> refused = {"x;touch " + mark + "-chained", "$(touch " + mark + "-substituted)",
                                              "`touch " + mark + "-quoted`", "--reinstall"};
    std::string rawData;
    for (const std::string& identifier : refused) rawData += "Tweak\t" + identifier + "\t1.0\tme\tTweaks\n";

    const auto operation = restore(rawData);

    EXPECT_EQ(operation->nbPackages(), static_cast<std::int64_t>(refused.size()));
    EXPECT_EQ(commandsStartingWith("apt-get"), std::vector<std::string>{"apt-get update"});
    for (const std::string& command : scope_.services.shell.commands) EXPECT_EQ(command.find("touch"), std::string::npos);
    for (const char* kind : {"-chained", "-substituted", "-quoted"}) {
        EXPECT_FALSE(FileManager::fileExists(mark + kind)) << kind;
    }
    for (const std::string& identifier : refused) {
        const auto package = oldPackage(identifier);
        ASSERT_TRUE(package) << identifier;
        ASSERT_TRUE(package->installLog()) << identifier;
        EXPECT_NE(package->installLog()->find("<" + identifier + ">"), std::string::npos) << *package->installLog();
        EXPECT_FALSE(isCurrent(package)) << identifier;
    }
}

TEST_F(PackagesRestoreOperationTest, FromTheStorageEachFetchedDebIsInstalledWithDpkg) {
    gRestoreFromDebsEnabled = true;
    const std::string debs = localStoragePath() + "/" + StorageLayout::stamp(Date(kSessionDate)) + "/DEBS";
    std::filesystem::create_directories(debs);
    std::filesystem::copy_file(device_.path("/private/var/lib/sandbox-repository/") + kExtraDeb,
                               debs + "/" + kExtraDeb);

    // The first package's file is missing from the storage: the fetches go on past it.
    const auto operation = restore(
        "Absent\tcom.example.absent\t2.0\tme\tTweaks\n"
        "Extra\tcom.example.extra\t1.0\tme\tTweaks\tmobilesubstrate\n");

    EXPECT_EQ(operation->nbPackages(), 2);
    EXPECT_EQ(installed("com.example.extra"), "1.0 install ok installed");
    EXPECT_TRUE(commandsStartingWith("apt-get -y").empty()) << "no repository is asked";
    const auto dpkg = commandsStartingWith("dpkg -i ");
    ASSERT_EQ(dpkg.size(), 1u);
    EXPECT_TRUE(dpkg[0].starts_with("dpkg -i \"" + TemporaryDirectory::path() + "/" + kExtraDeb + "\" 1>\""))
        << dpkg[0];
}

}  // namespace
}  // namespace stowhaven
