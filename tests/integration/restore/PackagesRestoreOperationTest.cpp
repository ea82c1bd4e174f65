// The restore of a session's packages onto the minimal sandbox device by the real apt-get:
// which packages are tried, and identifiers no shell may read; and how every whole restore
// ends. (The program's round trip installs from the repository and from the session's .deb
// files.)

#include "restore/PackagesRestoreOperation.h"
#include "restore/RestoreOperation.h"

#include "core/BackupSession.h"
#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "support/CatalogueFixture.h"
#include "support/OperationRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace stowhaven {
namespace {

// 2023-03-07 about noon.
constexpr double kSessionDate = 700000000;

class PackagesRestoreOperationTest : public test::CatalogueFixture {
protected:
    PackagesRestoreOperationTest() {
        gIsBackupMode = false;
        CydiaFileManager::shared().loadPackages();
        CydiaFileManager::shared().waitForCleanUpJobs();
    }

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
        return test::runCommand("DPKG_ADMINDIR=" + ShellQuote::path(device_.root() + "/var/lib/dpkg") +
                                " dpkg-query -W -f='${Version} ${Status}' " + identifier + " 2>/dev/null || true");
    }
};

TEST_F(PackagesRestoreOperationTest, APackageAptGetFindsInstalledAlreadyIsTriedOnce) {
    // Another version than the device's is chosen; apt-get has only the device's own. The
    // dock is on the device in that version.
    const auto operation = restore(
        "PreferenceLoader\tpreferenceloader\t2.2.2\tme\tSystem\tmobilesubstrate\n"
        "Five Icon Dock\tnet.tinkerlane.fiveicondock\t1.0.2\tme\tAddons_(SpringBoard)\tmobilesubstrate\n");

    EXPECT_EQ(operation->nbPackages(), 1);
    EXPECT_EQ(commandsStartingWith("apt-get -y -m install preferenceloader ").size(), 1u);
    EXPECT_EQ(commandsStartingWith("apt-get -y").size(), 1u) << "a package the device has in that version is not tried";
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
    for (const std::string& command : scope_.services.shell.commands)
        EXPECT_EQ(command.find("touch"), std::string::npos);
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

// The data folders go back to the user "mobile" after every restore, even one with nothing
// chosen, and the screens hear of the end.
TEST_F(PackagesRestoreOperationTest, EveryRestoreEndsByGivingTheDataFoldersBackToMobile) {
    auto session = std::make_shared<BackupSession>();
    session->setSessionDate(Date(kSessionDate));
    CydiaFileManager::shared().processBackupData({session}, false);
    CydiaFileManager::shared().changeCurrentBackupSessionTo(session);
    std::atomic<int> done = 0;
    const auto observer = NotificationCenter::defaultCenter().addObserver("RESTORE_DONE", nullptr,
                                                                          [&done](const Notification&) { ++done; });

    runOperation(std::make_shared<RestoreOperation>());
    NotificationCenter::defaultCenter().removeObserver(observer);

    CydiaFileManager::shared().waitForCleanUpJobs();
    const auto& commands = scope_.services.shell.commands;
    for (const char* folder : {"/var/mobile/Library/Calendar", "/var/mobile/Library/Notes"}) {
        const std::string command = "chown -R mobile:mobile \"" + device_.path(folder) + "\"";
        EXPECT_NE(std::find(commands.begin(), commands.end(), command), commands.end()) << folder;
    }
    EXPECT_EQ(done, 1);
}

}  // namespace
}  // namespace stowhaven
