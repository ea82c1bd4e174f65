// The archives of applications' data and of tweaks' places, made by the host's tar from a
// device root of the test's own and stored in local storage, then read back with tar.

#include "backup/AppStoreAppBackupOperation.h"
#include "backup/ApplicationsDataOperation.h"
#include "backup/ArchivableFolderBackupOperation.h"
#include "core/BackupSession.h"
#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "items/Application.h"
#include "items/ArchivableFolder.h"
#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "platform/TemporaryDirectory.h"
#include "storage/StorageLayout.h"
#include "storage/local/LocalStorageHelper.h"
#include "support/SandboxDevice.h"
#include "support/SupervisorScope.h"
#include "support/TestFolder.h"
#include "support/TextLines.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace stowhaven {
namespace {

// 2023-03-07 about noon.
constexpr double kSessionDate = 700000000;
constexpr const char* kContainer = "/var/mobile/Containers/Data/Application/7A1D5C93-2E4B-4F06-B8C7-5D3E9A0F6B21";

// The members of an archive that are files, as tar lists them.
std::set<std::string> fileMembers(const std::string& archive, const std::string& readFlags) {
    std::set<std::string> members;
    for (const std::string& member :
         test::linesOf(test::runCommand("tar -t" + readFlags + "f " + ShellQuote::path(archive)))) {
        if (!member.ends_with('/')) members.insert(member);
    }
    return members;
}

// A place of a tweak as a scan finds it on the device.
std::shared_ptr<ArchivableFolder> placeOf(std::int32_t type, const std::string& path, bool canSelectContent) {
    auto folder = std::make_shared<ArchivableFolder>("Place", std::nullopt, type, path, false, canSelectContent, false);
    folder->setExists(true);
    return folder;
}

std::shared_ptr<SelectableItem> itemNamed(const std::string& name, bool selected) {
    auto item = std::make_shared<SelectableItem>(name);
    item->setSelected(selected);
    return item;
}

class ApplicationAndFolderBackupTest : public ::testing::Test {
protected:
    ApplicationAndFolderBackupTest() {
        // The Supervisor's own start-up commands are left unrun; the backup's run.
        scope_.supervisor();
        scope_.services.shell.runsCommands = true;
        LocalStorageHelper::settleStoragePath();
        engine_ = LocalStorageHelper::createLocalStorageHelper();
    }

    void makeFile(const std::string& devicePath) {
        scope_.makeFile(devicePath);
        ASSERT_TRUE(FileManager::writeFile(scope_.path(devicePath), devicePath));
    }

    // The data part of a backup of a session of those items: the folder of the
    // applications' data, then the applications, then the places.
    void backUp(BackupSession::ApplicationList applications, BackupSession::FolderList folders) {
        auto session = std::make_shared<BackupSession>();
        session->setSessionDate(Date(kSessionDate));
        session->setApplications(std::move(applications));
        session->setArchivableFolders(std::move(folders));
        CydiaFileManager::shared().processBackupData({session}, false);
        std::make_shared<CreateApplicationDataFolderOperation>()->start();
        std::make_shared<AppStoreAppBackupOperation>()->start();
        std::make_shared<ArchivableFolderBackupOperation>()->start();
    }

    static std::string sessionDirectory() {
        return localStoragePath() + "/" + StorageLayout::stamp(Date(kSessionDate));
    }

    std::vector<std::string> sessionContents() const {
        auto names = FileManager::contentsOfDirectory(sessionDirectory()).value_or(std::vector<std::string>{});
        std::sort(names.begin(), names.end());
        return names;
    }

    // The members of the inner tar of a place of chosen items: its archive in the session
    // directory is a compressed tar of that tar alone, named by its place on the device.
    std::set<std::string> innerMembers(const ArchivableFolder& folder) {
        const std::string archive = sessionDirectory() + "/" + folder.archiveName() + ".tbz";
        const std::string innerPath = "var/tmp/stowhaven/" + folder.archiveName() + ".tar";
        EXPECT_EQ(fileMembers(archive, "j"), std::set<std::string>{innerPath});
        EXPECT_FALSE(FileManager::fileExists(scope_.path("/" + innerPath))) << "the inner tar is not left behind";
        test::runCommand("tar -xjf " + ShellQuote::path(archive) + " -C " + ShellQuote::path(work_.path().string()));
        return fileMembers(work_ / innerPath, "");
    }

    test::SupervisorScope scope_;
    std::shared_ptr<LocalStorageHelper> engine_;
    test::TestFolder work_;
};

TEST_F(ApplicationAndFolderBackupTest, AnApplicationsArchiveHoldsBothDataFoldersWithoutCachesOrCookies) {
    const std::string container = kContainer;
    for (const char* file : {"/Documents/Notes.txt", "/Documents/Inbox/letter.pdf", "/Documents/Inbox/Caches/old.bin",
                             "/Documents/Cookies/jar.txt", "/Library/Preferences/app.plist",
                             "/Library/Caches/Snapshots/big.png", "/Library/Cookies/Cookies.binarycookies",
                             "/Library/WebKit/Data/Cookies/site.db", "/Library/WebKit/Data/site.sqlite"}) {
        makeFile(container + file);
    }
    auto application = std::make_shared<Application>("Lighthouse Notes");
    application->setDocumentPath(container + "/Documents");
    application->setLibraryPath(container + "/Library");

    backUp({application}, {});

    const std::string archive = sessionDirectory() + "/APPLICATIONS_DATA/" + application->archiveName();
    ASSERT_TRUE(FileManager::isRegularFile(archive));
    const std::string member = container.substr(1);
    EXPECT_EQ(fileMembers(archive, "j"),
              (std::set<std::string>{member + "/Documents/Notes.txt", member + "/Documents/Inbox/letter.pdf",
                                     member + "/Library/Preferences/app.plist",
                                     member + "/Library/WebKit/Data/site.sqlite"}));
    EXPECT_EQ(sessionContents(), std::vector<std::string>{"APPLICATIONS_DATA"});
}

// The places themselves come back in the program's round trip.
TEST_F(ApplicationAndFolderBackupTest, APlaceWithNothingChosenIsPassedOver) {
    makeFile("/var/mobile/Media/ROMs/Quest.gba");
    auto games = placeOf(5, "/var/mobile/Media/ROMs", true);
    games->setContentItems({itemNamed("Quest.gba", false)});

    backUp({}, {games});

    EXPECT_EQ(sessionContents(), std::vector<std::string>{"APPLICATIONS_DATA"});
    for (const char* extension : {".tar", ".tbz"}) {
        EXPECT_FALSE(FileManager::fileExists(TemporaryDirectory::path() + "/" + games->archiveName() + extension));
    }
}

TEST_F(ApplicationAndFolderBackupTest, TheITunesRingtonesGoWithTheirList) {
    const std::string ringtones = "/var/mobile/Media/iTunes_Control/Ringtones";
    makeFile(ringtones + "/Bell.m4r");
    makeFile(ringtones + "/Chime.m4r");
    makeFile(ArchivableFolder::kITunesRingtonesList);
    auto place = placeOf(ArchivableFolder::kITunesRingtonesType, ringtones, true);
    place->setContentItems({itemNamed("Bell.m4r", true), itemNamed("Chime.m4r", false)});

    backUp({}, {place});

    EXPECT_EQ(innerMembers(*place),
              (std::set<std::string>{ringtones.substr(1) + "/Bell.m4r",
                                     std::string(ArchivableFolder::kITunesRingtonesList).substr(1)}));
}

TEST_F(ApplicationAndFolderBackupTest, AnItemsNameIsArchivedAsItIsWithoutTheShellReadingIt) {
    const std::string hostile = "Tom's \"$(cd;touch substituted)\" `cd;touch quoted` $HOME.m4r";
    makeFile("/Library/Ringtones/" + hostile);
    auto place = placeOf(4, "/Library/Ringtones", true);
    place->setContentItems({itemNamed(hostile, true)});

    backUp({}, {place});

    EXPECT_EQ(innerMembers(*place), std::set<std::string>{"Library/Ringtones/" + hostile});
    // The commands in the name would have left their marks in the shell's home folder, or
    // where it starts.
    for (const std::string& folder : {DeviceRoot::var() + "/lib/stowhaven/tools/home", TemporaryDirectory::path()}) {
        EXPECT_FALSE(FileManager::fileExists(folder + "/substituted")) << folder;
        EXPECT_FALSE(FileManager::fileExists(folder + "/quoted")) << folder;
    }
}

}  // namespace
}  // namespace stowhaven
