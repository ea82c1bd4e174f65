// What a restore takes of a session's applications and tweak places when no one picks.

#include "core/BackupSession.h"
#include "items/Application.h"
#include "items/ArchivableFolder.h"
#include "restore/RestoreSelection.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

class RestoreSelectionTest : public ::testing::Test {
protected:
    RestoreSelectionTest() {
        installed_->setBundleIdentifier("com.tinkerlane.tidewatch");
        installed_->setIsInstalled(true);
        missing_->setBundleIdentifier("org.harbourgames.lighthouse");
        themes_->setExists(true);
        hosts_->setExists(true);
        themes_->setContentItems({std::make_shared<SelectableItem>("Paperlight.theme")});
        session_.setApplications(BackupSession::ApplicationList{installed_, missing_});
        session_.setArchivableFolders(BackupSession::FolderList{themes_, hosts_});
    }

    test::SupervisorScope scope_;
    BackupSession session_;
    std::shared_ptr<Application> installed_ = std::make_shared<Application>("Tidewatch");
    std::shared_ptr<Application> missing_ = std::make_shared<Application>("Lighthouse");
    std::shared_ptr<ArchivableFolder> themes_ = std::make_shared<ArchivableFolder>(
        "Winterboard Themes", "winterboard", 6, "/Library/Themes/", false, true, false);
    std::shared_ptr<ArchivableFolder> hosts_ =
        std::make_shared<ArchivableFolder>("Hosts file", std::nullopt, 41, "/private/etc/hosts", true, false, false);
};

TEST_F(RestoreSelectionTest, WithoutASavedChoiceEverythingTheDeviceCanTakeIsTaken) {
    selectRestoreDefaults(session_);
    EXPECT_TRUE(installed_->isSelected());
    EXPECT_FALSE(missing_->isSelected()) << "an application the device lacks takes no data";
    EXPECT_TRUE(themes_->isSelected());
    EXPECT_TRUE(hosts_->isSelected());
}

TEST_F(RestoreSelectionTest, ASavedChoiceNarrowsIt) {
    scope_.supervisor().lowLevelStorePreferencesData(PlistValue(PlistValue::Array{}), "DefaultApps_Restore");
    scope_.supervisor().lowLevelStorePreferencesData(PlistValue(PlistValue::Array{PlistValue("6")}),
                                                     "Restore_ArchivableFolders");
    ArchivableFolder::resetDefaultLists();
    selectRestoreDefaults(session_);
    EXPECT_FALSE(installed_->isSelected());
    EXPECT_TRUE(themes_->isSelected());
    EXPECT_FALSE(hosts_->isSelected());
}

}  // namespace
}  // namespace stowhaven
