// A backup of the demo device with everything, restored by the program onto the same
// device after a wipe: packages, sources and files come back as they were.

#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "support/SandboxDevice.h"
#include "support/TestFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

constexpr const char* kStorageFolder = "/var/mobile/Library/Preferences/Stowhaven";

// What the restore puts back that the comparison looks at, file by file.
const std::vector<std::string> kRestoredFolders = {
    "/var/mobile/Library/Calendar",
    "/var/mobile/Library/SMS",
    "/var/mobile/Library/AddressBook",
    "/var/mobile/Library/Health",
    "/var/mobile/Library/Maps",
    "/var/mobile/Library/Notes",
    "/var/mobile/Library/Safari",
    "/var/wireless/Library/CallHistory",
    "/var/mobile/Containers/Data/Application/C39F0A1E-7D52-4B8C-A6E4-0F2B9D7C1A58/Documents",
    "/var/mobile/Containers/Data/Application/C39F0A1E-7D52-4B8C-A6E4-0F2B9D7C1A58/Library",
    "/var/mobile/Documents/Flex",
    "/Library/Themes"};

// Every file below the folder of ORIGINAL is in COPY with the same bytes, but the caches
// and cookies that no backup takes.
void expectSameFiles(const test::SandboxDevice& original, const test::SandboxDevice& copy, const std::string& folder) {
    ASSERT_TRUE(fs::exists(original.path(folder))) << folder;
    for (const auto& entry : fs::recursive_directory_iterator(original.path(folder))) {
        const std::string devicePath = entry.path().string().substr(original.root().size());
        if (!entry.is_regular_file() || devicePath.find("/Caches/") != std::string::npos ||
            devicePath.find("/Cookies/") != std::string::npos) {
            continue;
        }
        const bool same =
            FileManager::contentsOfFile(copy.path(devicePath)) == FileManager::contentsOfFile(entry.path().string());
        EXPECT_TRUE(same) << devicePath;
    }
}

std::string installedPackages(const test::SandboxDevice& device) {
    return test::runCommand("dpkg-query --admindir=" + ShellQuote::path(device.root() + "/var/lib/dpkg") +
                            " -W -f='${Package}\\n'");
}

// One backup of the demo device serves every restore of the suite.
class RoundTripTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        work_ = new test::TestFolder;
        original_ = new test::SandboxDevice("demo");
        FileManager::writeFile(keyFile(), "correct horse\n");
        // A theme of the owner's own, which no package brings back.
        fs::create_directories(original_->path("/Library/Themes/Handmade.theme"));
        FileManager::writeFile(original_->path("/Library/Themes/Handmade.theme/Info.plist"), "<plist/>");
        ASSERT_TRUE(original_->turnOn({"AutoScanPkgEnabled", "AutoScanStockAppsEnabled", "AutoScanAppStoreAppsEnabled",
                                       "AutoScanOtherOptionsEnabled", "BackupDebsEnabled", "EncryptBackupEnabled"}));
        // The capture as the repositories serve it; the repack has tests of its own.
        ASSERT_EQ(original_->run("settings RepackMissingDebsEnabled false").status, 0);
        const auto backup =
            original_->run("backup --yes --title 'Before the wipe' --key-file " + ShellQuote::path(keyFile()));
        EXPECT_EQ(backup.status, 0) << backup.errors;
    }
    static void TearDownTestSuite() {
        delete original_;
        delete work_;
    }

    static std::string keyFile() { return (work_->path() / "key").string(); }

    // The wiped device with the storage folder carried over, its scans on.
    static void carryStorageTo(const test::SandboxDevice& device) {
        fs::copy(original_->path(kStorageFolder), device.path(kStorageFolder), fs::copy_options::recursive);
        ASSERT_TRUE(device.turnOn({"AutoScanPkgEnabled", "AutoScanStockAppsEnabled", "AutoScanAppStoreAppsEnabled",
                                   "AutoScanOtherOptionsEnabled"}));
    }

    static inline test::TestFolder* work_ = nullptr;
    static inline test::SandboxDevice* original_ = nullptr;
};

TEST_F(RoundTripTest, ARestoreOntoTheWipedDeviceBringsEverythingBack) {
    const test::SandboxDevice wiped = test::SandboxDevice::fresh("demo");
    carryStorageTo(wiped);

    // Only a restore that is not confirmed first asks for the key of an encrypted session.
    ASSERT_EQ(wiped.run("settings ConfirmRestore false").status, 0);
    ASSERT_EQ(wiped.run("settings PkgFWCompatibilityCheckEnabled false").status, 0);
    const auto withoutKey = wiped.run("restore --yes");
    EXPECT_EQ(withoutKey.status, 2) << "an encrypted session needs its key";
    EXPECT_NE(withoutKey.errors.find("--key-file"), std::string::npos) << withoutKey.errors;
    const auto restore =
        wiped.run("restore --yes --key-file " + ShellQuote::path(keyFile()) + " --log com.fuyuchi.flex2");
    EXPECT_EQ(restore.status, 0) << restore.output << restore.errors;
    EXPECT_NE(restore.output.find("installed          Flex 2 (com.fuyuchi.flex2 2.4.1)"), std::string::npos)
        << restore.output;
    EXPECT_NE(restore.output.find("Setting up com.fuyuchi.flex2"), std::string::npos) << "its install log";

    const std::string packages = installedPackages(wiped);
    for (const char* package : {"winterboard", "com.fuyuchi.flex2", "net.tinkerlane.quietbadges", "bash"}) {
        EXPECT_NE(packages.find(std::string(package) + "\n"), std::string::npos) << package;
    }
    const auto sources = FileManager::contentsOfFile(wiped.path("/etc/apt/sources.list.d/cydia.list"));
    EXPECT_NE(sources.value_or("").find("http://127.0.0.13/tinkerlane/"), std::string::npos);
    const auto cydiaSettings =
        FileManager::contentsOfFile(wiped.path("/var/mobile/Library/Preferences/com.saurik.Cydia.plist"));
    EXPECT_NE(cydiaSettings.value_or("").find("127.0.0.13/tinkerlane"), std::string::npos);
    for (const std::string& folder : kRestoredFolders) expectSameFiles(*original_, wiped, folder);
}

TEST_F(RoundTripTest, WithTheCapturedFilesPackagesComeBackWithoutARepository) {
    const test::SandboxDevice wiped = test::SandboxDevice::fresh("demo");
    carryStorageTo(wiped);
    ASSERT_TRUE(wiped.turnOn({"RestoreFromDebsEnabled"}));
    // No repository but the session's own files.
    fs::remove(wiped.path("/etc/apt/sources.list.d/sandbox.list"));

    // A package whose file the session lacks stays missing: the restore says so and fails.
    const auto restore = wiped.run("restore --yes --key-file " + ShellQuote::path(keyFile()));
    EXPECT_EQ(restore.status, 1) << restore.output << restore.errors;
    const std::string packages = installedPackages(wiped);
    for (const char* package : {"bash", "com.aerialx.ishshit"}) {
        EXPECT_NE(packages.find(std::string(package) + "\n"), std::string::npos) << package;
    }
    EXPECT_NE(restore.output.find("installed          Bourne-Again SHell (bash 4.0.44-16)"), std::string::npos);
    EXPECT_EQ(packages.find("net.tinkerlane.quietbadges\n"), std::string::npos);
    EXPECT_NE(restore.output.find("failed             Quiet Badges (net.tinkerlane.quietbadges 0.4-2)"),
              std::string::npos)
        << restore.output;
}

}  // namespace
}  // namespace stowhaven
