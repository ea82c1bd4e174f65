// The selection screens' logic driven as a screen drives it, on a sandbox device whose
// catalogue is loaded as at start: what a search shows, what the bulk choices and the sorts
// do, what a default keeps, and a package's removal through the real package manager.

#include "core/CydiaFileManager.h"
#include "core/PackageDefaults.h"
#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "flows/PackageActions.h"
#include "flows/SelectableOptionsViewController.h"
#include "platform/dispatch/NotificationCenter.h"
#include "storage/local/LocalStorageHelper.h"
#include "support/SandboxDevice.h"
#include "support/SupervisorScope.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace stowhaven {
namespace {

constexpr const char* kDock = "net.tinkerlane.fiveicondock";

class SelectionScreensTest : public ::testing::Test {
protected:
    SelectionScreensTest() : scope_(device_.root()) {
        scope_.services.shell.runsCommands = true;
        gAutoScanPkgEnabled = true;
        gAutoScanAppStoreAppsEnabled = true;
        gIsBackupMode = true;
        LocalStorageHelper::settleStoragePath();
        engine_ = LocalStorageHelper::createLocalStorageHelper();
        load();
    }
    ~SelectionScreensTest() override { catalogue().waitForCleanUpJobs(); }

    static CydiaFileManager& catalogue() { return CydiaFileManager::shared(); }
    static void load() {
        catalogue().resetAllData();
        catalogue().loadPackages();
    }
    static std::optional<PlistValue::Array> stored(const std::string& key) {
        return Supervisor::shared().lowLevelGetArrayPreferencesDataForKey(key);
    }
    static std::vector<std::string> titles(const SelectionRows& rows) {
        std::vector<std::string> titles;
        for (const auto& row : rows) titles.push_back(row->title());
        return titles;
    }
    static std::size_t selectedCount(const SelectionRows& rows) {
        return std::count_if(rows.begin(), rows.end(), [](const auto& row) { return row->isSelected(); });
    }

    const test::SandboxDevice device_{"demo"};
    test::SupervisorScope scope_;
    std::shared_ptr<LocalStorageHelper> engine_;
};

TEST_F(SelectionScreensTest, SearchFindsByNameWhereTheListHasASearchAndBlankTextShowsTheWholeList) {
    SelectableOptionsViewController screen({SelectionKind::Packages, SelectionKind::Sources});
    const std::size_t all = screen.data().size();
    ASSERT_GT(all, 10u);
    EXPECT_EQ(screen.selectedCountStatus(), fmt::format("{0} of {0} selected", all));

    screen.search("  icon DOCK\n");
    EXPECT_EQ(titles(screen.rows()), std::vector<std::string>{"Five Icon Dock"});
    // Bulk choices act on the whole list, not on what the search shows.
    screen.selectNone();
    EXPECT_EQ(screen.selectedCountStatus(), fmt::format("0 of {} selected", all));
    screen.switchState(0);
    EXPECT_EQ(selectedCount(screen.data()), 1u);

    screen.search(" \t\n ");
    EXPECT_FALSE(screen.filteredData());
    EXPECT_EQ(screen.rows().size(), all);

    screen.invertSelection();
    EXPECT_EQ(selectedCount(screen.data()), all - 1);
    ASSERT_TRUE(screen.selectFWCompatible());
    for (const auto& row : screen.data()) {
        const auto& package = static_cast<const PackageRow&>(*row).package();
        EXPECT_EQ(row->isSelected(), package->isFirmwareCompatible("8.1.2")) << row->key();
    }

    // The sources have no search: any text leaves them whole.
    screen.changeTableContent(1);
    screen.search("127");
    EXPECT_FALSE(screen.filteredData());
    EXPECT_FALSE(screen.selectFWCompatible());
}

// The default of the packages is what the next load selects; all selected is kept as none,
// under which a package the list never heard of comes up selected.
TEST_F(SelectionScreensTest, APackageLeftOutOfTheDefaultComesUpDeselectedAndAllSelectedStoresNone) {
    const CydiaFile newcomer(
        "Newcomer\tcom.example.newcomer\t1.0\tSomeone\tTweaks\tfirmware (>= 7.0)\tinstall ok installed");
    {
        SelectableOptionsViewController screen({SelectionKind::Packages});
        ASSERT_TRUE(screen.setSelected(kDock, false));
        screen.saveAsDefault();
        const auto list = stored("DefaultPackages_Backup");
        ASSERT_TRUE(list);
        EXPECT_EQ(list->size(), screen.data().size() - 1);
    }
    load();
    for (const auto& package : catalogue().currentPackages()) {
        EXPECT_EQ(package->isBackupSelected(), !package->isPackageNamed(kDock)) << *package->packageName();
    }
    EXPECT_FALSE(isPackageSelectedByDefault(newcomer, true));
    EXPECT_TRUE(isPackageSelectedByDefault(newcomer, false)) << "the restore's default is its own";

    SelectableOptionsViewController screen({SelectionKind::Packages});
    screen.selectAll();
    screen.saveAsDefault();
    EXPECT_FALSE(stored("DefaultPackages_Backup"));
    EXPECT_TRUE(isPackageSelectedByDefault(newcomer, true));
}

// A restore skips what the device has, selected or not: that is no choice of the user's,
// and a default saved then still takes those packages once the device lacks them.
TEST_F(SelectionScreensTest, ARestoresDefaultKeepsThePackagesItSkipsForBeingInstalled) {
    std::string rawData;
    for (const auto& package : catalogue().currentPackages()) rawData += package->backupData() + "\n";
    auto session = std::make_shared<BackupSession>();
    session->setSessionDate(Date(7e8));
    session->setRawData(rawData);
    catalogue().processBackupData({session}, false);
    catalogue().processLoadedPackages();
    gIsBackupMode = false;
    SelectableOptionsViewController screen({SelectionKind::Packages});
    ASSERT_FALSE(screen.data().empty());
    EXPECT_EQ(selectedCount(screen.data()), 0u) << "every package is on the device";
    screen.saveAsDefault();
    EXPECT_FALSE(stored("DefaultPackages_Restore"));
    EXPECT_FALSE(stored("DefaultPackages_Backup"));
}

TEST_F(SelectionScreensTest, AnApplicationWithoutBundleIdentifierNeverStandsInTheDefaultAndMakesItAList) {
    SelectableOptionsViewController screen({SelectionKind::Applications, SelectionKind::StockApps});
    ASSERT_EQ(screen.data().size(), 3u);
    const auto& nameless = static_cast<const ApplicationRow&>(*screen.data()[0]).application();
    const auto identifier = nameless->bundleIdentifier();
    nameless->setBundleIdentifier(std::nullopt);
    // The largest application comes up deselected.
    screen.selectAll();
    screen.saveAsDefault();
    const auto list = stored("DefaultApps_Backup");
    ASSERT_TRUE(list) << "all selected, yet one can't stand in the list";
    ASSERT_EQ(list->size(), 2u);
    for (const PlistValue& entry : *list) {
        EXPECT_TRUE(entry.asString()->ends_with(",1,1")) << *entry.asString();
        EXPECT_EQ(entry.asString()->find(*identifier), std::string::npos);
    }
    nameless->setBundleIdentifier(identifier);
    screen.saveAsDefault();
    EXPECT_FALSE(stored("DefaultApps_Backup"));
}

// A segment sorts ascending first and flips on each next tap; the selected size follows.
TEST_F(SelectionScreensTest, TheApplicationSortsFlipTheirOrderAndTheSelectedSizeIsShownInMegabytes) {
    SelectableOptionsViewController screen({SelectionKind::Applications});
    const auto sizesOf = [&] {
        std::vector<double> sizes;
        for (const auto& row : screen.data()) sizes.push_back(row->size());
        return sizes;
    };
    std::vector<double> sizes;
    screen.sortBy(SelectableOptionsViewController::kSortBySize);
    sizes = sizesOf();
    EXPECT_TRUE(std::is_sorted(sizes.begin(), sizes.end()));
    screen.sortBy(SelectableOptionsViewController::kSortBySize);
    sizes = sizesOf();
    EXPECT_TRUE(std::is_sorted(sizes.rbegin(), sizes.rend()));
    screen.sortBy(SelectableOptionsViewController::kSortByName);
    EXPECT_EQ(titles(screen.data()), (std::vector<std::string>{"Lighthouse", "Quayside", "Tides & Tea"}));

    screen.selectNone();
    screen.switchState(1);
    EXPECT_EQ(screen.totalSelectedSize(), "Total selected: 0.094Mb") << "Quayside, second by name";
}

// Remove now runs the real package manager on the device; a name that could be read as
// more than an identifier never reaches the shell.
TEST_F(SelectionScreensTest, RemoveNowTakesThePackageOffTheDeviceAndAHostileNameRunsNothing) {
    int reloads = 0;
    const auto observer = NotificationCenter::defaultCenter().addObserver("RELOAD_DATA_NEEDED", nullptr,
                                                                          [&](const Notification&) { ++reloads; });
    const CydiaFile hostile("Evil\tx;touch${IFS}/tmp/owned\t1.0\tSomeone\tTweaks\t\tinstall ok installed");
    scope_.services.shell.commands.clear();
    EXPECT_FALSE(PackageActions::run(hostile, true));
    EXPECT_TRUE(scope_.services.shell.commands.empty());

    const auto packages = catalogue().currentPackages();
    const auto dock = std::find_if(packages.begin(), packages.end(),
                                   [](const auto& package) { return package->isPackageNamed(kDock); });
    ASSERT_NE(dock, packages.end());
    EXPECT_TRUE(PackageActions::run(**dock, true));
    EXPECT_EQ(reloads, 1);
    NotificationCenter::defaultCenter().removeObserver(observer);
    load();
    for (const auto& package : catalogue().currentPackages()) EXPECT_FALSE(package->isPackageNamed(kDock));
}

}  // namespace
}  // namespace stowhaven
