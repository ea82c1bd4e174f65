// What a backup could take from a sandbox device: its applications, small items and the
// places of its tweaks, found as the device keeps them.

#include "core/ProcessFlags.h"
#include "items/ApplicationScan.h"
#include "items/ArchivableFolders.h"
#include "items/DeviceItems.h"
#include "platform/DeviceFacts.h"
#include "platform/FileManager.h"
#include "platform/UserDefaults.h"
#include "platform/plist/PlistCodec.h"
#include "support/SandboxDevice.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace stowhaven {
namespace {

using Dictionary = PlistValue::Dictionary;

// One demo device, built once; each test works on its own copy.
const test::SandboxDevice& demoDevice() {
    static const test::SandboxDevice device("demo");
    return device;
}

class DeviceItemsTest : public ::testing::Test {
protected:
    DeviceItemsTest() {
        scope_.services.shell.runsCommands = true;
        gAutoScanOtherOptionsEnabled = true;
    }
    ~DeviceItemsTest() override { gAutoScanOtherOptionsEnabled = false; }

    std::string path(const std::string& devicePath) const { return device_.path(devicePath); }

    template <typename Items>
    static auto named(const Items& items, const std::string& name) {
        const auto found =
            std::find_if(items.begin(), items.end(), [&](const auto& item) { return item->name() == name; });
        return found == items.end() ? nullptr : *found;
    }

    test::SandboxDevice device_{demoDevice(), "device"};
    test::SupervisorScope scope_{device_.root()};
};

TEST_F(DeviceItemsTest, ApplicationsAreFoundMeasuredAndNamedAsTheirBundlesSay) {
    const auto applications = ApplicationScan::buildListOfApplications({});
    ASSERT_EQ(applications.size(), 3u);
    EXPECT_EQ(applications[0]->displayName(), "Lighthouse") << "sorted by display name";
    EXPECT_EQ(applications[1]->displayName(), "Quayside") << "neither name in its bundle: the folder's, up to the dot";
    EXPECT_EQ(applications[2]->displayName(), "Tides & Tea");

    const auto& lighthouse = applications[0];
    EXPECT_EQ(lighthouse->documentPath(),
              "/var/mobile/Containers/Data/Application/7A1D5C93-2E4B-4F06-B8C7-5D3E9A0F6B21/Documents");
    EXPECT_NEAR(lighthouse->libraryDirSize(), 1, 0.01) << "its caches left out";
    EXPECT_TRUE(lighthouse->isInstalled());
    EXPECT_EQ(scope_.supervisor().largestApplication(), lighthouse) << "the biggest one";
    EXPECT_TRUE(applications[2]->isSelected());
    EXPECT_TRUE(applications[2]->iconPath()->ends_with("Tidewatch.app/Icon@2x.png")) << "the @2x one of a list";
    EXPECT_TRUE(applications[1]->iconPath()->ends_with("/../iTunesArtwork")) << "no icon named: the artwork";
}

TEST_F(DeviceItemsTest, AnOlderSystemKeepsApplicationsAndTheirDataTogether) {
    DeviceFactsReader::pin(DeviceFacts{"0123", "Old iPhone", "iPhone4,1", "7.1.2"});
    scope_.restartSupervisor();
    const std::string container = "/var/mobile/Applications/9F1E2D3C-4B5A-6978-8A9B-0C1D2E3F4A5B";
    ASSERT_TRUE(FileManager::createDirectory(path(container + "/Chess.app"), true));
    ASSERT_TRUE(PlistCodec::writeFile(path(container + "/Chess.app/Info.plist"),
                                      Dictionary{{"CFBundleIdentifier", "org.example.chess"}}, PlistFormat::Xml, 0644));
    const auto applications = ApplicationScan::buildListOfApplications({});
    DeviceFactsReader::pin(std::nullopt);
    ASSERT_EQ(applications.size(), 1u);
    EXPECT_EQ(applications[0]->homePath(), container + "/Chess.app");
    EXPECT_EQ(applications[0]->bundleIdentifier(), "org.example.chess");
}

TEST_F(DeviceItemsTest, AnApplicationOfTheSessionTakesThePathsOfTheInstalledOne) {
    auto stored = std::make_shared<Application>("Tidewatch");
    stored->setBundleIdentifier("com.tinkerlane.tidewatch");
    stored->setHomePath("/var/mobile/Containers/Bundle/Application/OLD/Tidewatch.app");
    ApplicationScan::buildListOfApplications({{"com.tinkerlane.tidewatch", stored}});
    EXPECT_EQ(stored->homePath(),
              "/var/mobile/Containers/Bundle/Application/5E8B2D71-6C04-4A93-9F2E-1B7D0C8A3E46/"
              "Tidewatch.app");
    EXPECT_TRUE(stored->isInstalled());
}

// The second pass of a load takes the applications its first pass found: new items with the
// same measures, chosen afresh, whatever became of the earlier ones, and the device not walked.
TEST_F(DeviceItemsTest, ApplicationsFoundAMomentAgoAreTakenAsNewItemsChosenAfresh) {
    const auto found = ApplicationScan::buildListOfApplications({});
    ASSERT_EQ(found.size(), 3u);
    for (const auto& application : found) application->deselect();
    ASSERT_TRUE(FileManager::removeItem(path("/var/mobile/Containers/Bundle/Application")));

    auto stored = std::make_shared<Application>("Tidewatch");
    stored->setBundleIdentifier("com.tinkerlane.tidewatch");
    scope_.supervisor().setLargestApplication(nullptr);  // as each pass of a load begins
    const auto again = ApplicationScan::buildListOfApplications({{"com.tinkerlane.tidewatch", stored}}, found);

    ASSERT_EQ(again.size(), 3u) << "the device, its bundles gone, wasn't walked again";
    for (std::size_t index = 0; index < found.size(); ++index) {
        EXPECT_NE(again[index], found[index]) << "a new item";
        EXPECT_EQ(again[index]->homePath(), found[index]->homePath());
        EXPECT_EQ(again[index]->totalBytes(), found[index]->totalBytes());
    }
    EXPECT_FALSE(again[0]->isSelected()) << "the biggest one starts out not chosen";
    EXPECT_TRUE(again[2]->isSelected()) << "chosen afresh, not as the earlier item was left";
    EXPECT_EQ(stored->homePath(), named(found, "Tidewatch")->homePath()) << "the session's application takes its paths";
}
TEST_F(DeviceItemsTest, TheDefaultListsChooseApplicationsAndTheirFolders) {
    UserDefaults::standard().set("DefaultApps_Backup", PlistValue::Array{"com.tinkerlane.tidewatch,1,0"});
    UserDefaults::standard().set("DefaultApps_Restore", PlistValue::Array{"net.quayside.notebook"});
    auto applications = ApplicationScan::buildListOfApplications({});
    for (const auto& application : applications) application->selectIfBackupDefault();
    const auto tides = named(applications, "Tidewatch");
    EXPECT_TRUE(tides->isSelected());
    EXPECT_TRUE(tides->hasDocumentsDir());
    EXPECT_FALSE(tides->hasLibraryDir());
    EXPECT_FALSE(named(applications, "Quayside.Notes")->isSelected()) << "not named in the backup list";

    for (const auto& application : applications) application->selectIfRestoreDefault();
    EXPECT_TRUE(named(applications, "Quayside.Notes")->isSelected());
    EXPECT_FALSE(tides->isSelected());
}

TEST_F(DeviceItemsTest, SourcesAreThePackageManagersButItsStableOne) {
    const std::string settings = path("/var/mobile/Library/Preferences/com.saurik.Cydia.plist");
    auto cydia = *PlistCodec::readFile(settings);
    (*cydia.asDictionary())["CydiaSources"].asDictionary()->insert_or_assign(
        "deb:http://repo.example.org/ ./:./",
        Dictionary{{"URI", "http://repo.example.org/ ./"}, {"Type", "deb"}, {"Distribution", "./"}});
    ASSERT_TRUE(PlistCodec::writeFile(settings, cydia, PlistFormat::Binary, 0644));

    const auto sources = DeviceItems::repositorySources();
    EXPECT_EQ(named(sources, "127.0.0.11"), nullptr) << "the stable distribution stays out";
    const auto example = named(sources, "Repo.Example.Org");
    ASSERT_NE(example, nullptr);
    EXPECT_EQ(example->link(), "http://repo.example.org/");
    const auto harbour = named(sources, "127.0.0.15");
    ASSERT_NE(harbour, nullptr);
    EXPECT_EQ(harbour->debSourceAsString(), "deb http://127.0.0.15/harbour/debian/ ios8 main");
}

TEST_F(DeviceItemsTest, TweakFoldersExistByTheirPackageOrByTheirPlace) {
    FileManager::removeItem(path("/var/mobile/Documents/Flex"));
    ArchivableFolders::resetFolder();
    const auto folders = ArchivableFolders::folders();
    EXPECT_TRUE(named(folders, "Flex 2")->exists()) << "its package is installed, its folder gone";
    EXPECT_FALSE(named(folders, "Copic")->exists()) << "no package, no place";
    EXPECT_TRUE(named(folders, "Hosts file")->exists()) << "no package: the file is there";
    const auto ringtones = named(folders, "Ringtones (Cydia)");
    EXPECT_TRUE(ringtones->contentItems().empty()) << "only the system's own tones";
    EXPECT_FALSE(ringtones->isSelected());
}

}  // namespace
}  // namespace stowhaven
