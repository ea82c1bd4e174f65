#pragma once

// Sessions with something in every archived field, for the tests, the fuzz targets' seeds
// and the benchmarks. Making one needs a Supervisor, and so a device root.

#include "core/BackupSession.h"
#include "items/Application.h"
#include "items/ArchivableFolder.h"
#include "items/PhotoVideoAlbum.h"
#include "items/RepositorySource.h"
#include "items/SHSHBlob.h"
#include "items/WebClip.h"

#include <memory>
#include <string>

namespace stowhaven::test {

inline constexpr const char* kPadlock = "\xf0\x9f\x94\x92";

inline std::shared_ptr<Application> makeApplication() {
    auto application = std::make_shared<Application>("Weather Pro");
    application->setDisplayName("Weather");
    application->setBundleIdentifier("com.example.weather");
    application->setHomePath("/var/mobile/Containers/Bundle/Application/ABC/Weather Pro.app");
    application->setDocumentPath("/var/mobile/Containers/Data/Application/DEF/Documents");
    application->setLibraryPath("/var/mobile/Containers/Data/Application/DEF/Library");
    application->setIconPath("/var/mobile/Containers/Bundle/Application/ABC/Weather Pro.app/Icon@2x.png");
    application->setInstallDate(Date(441763200));
    application->setDocumentsDirSize(12.5);
    application->setDocumentsDirSizeUnit(2);
    application->setLibraryDirSize(300);
    application->setLibraryDirSizeUnit(1);
    application->setSize(12.8);
    return application;
}

inline std::shared_ptr<ArchivableFolder> makeRingtonesFolder() {
    auto folder =
        std::make_shared<ArchivableFolder>("Ringtones", std::nullopt, 4, "/Library/Ringtones/", false, true, false);
    folder->setExists(true);
    auto kept = std::make_shared<SelectableItem>("Chime.m4r");
    kept->setSize(0.25);
    auto left = std::make_shared<SelectableItem>("Buzz.m4r");
    left->setSelected(false);
    folder->setContentItems({kept, left});
    return folder;
}

// A session with something in every archived field.
inline std::shared_ptr<BackupSession> fullSession() {
    auto session = std::make_shared<BackupSession>();
    session->setTitle(std::string(kPadlock) + " Before the upgrade");
    session->setQuickDescription("All my tweaks");
    session->setEncryptionKey("0A1B2C");
    session->setSessionDate(Date(747763200.5));
    session->setNbPackages(2);
    session->setRawData("Foo\tcom.foo\t1.0\tme\tTweaks\tmobilesubstrate\nBar\tcom.bar\t2\tyou\tThemes\t(null)\n");
    session->addRepositorySource(
        std::make_shared<RepositorySource>(PlistValue::Dictionary{{"URI", "http://repo.example.org/"},
                                                                  {"Type", "deb"},
                                                                  {"Distribution", "stable"},
                                                                  {"Sections", PlistValue::Array{"main", "extra"}}}));
    session->setCydiaSections(PlistValue::Dictionary{{"Tweaks", PlistValue::Dictionary{{"Hidden", false}}}});
    session->setApplications(BackupSession::ApplicationList{makeApplication()});
    session->setWebclips(BackupSession::WebClipList{std::make_shared<WebClip>(
        "clip-1", ArchiveValue(PlistValue::Dictionary{{"Title", "News"}, {"URL", "http://news.example/"}}))});
    session->setSHSHBlobs(BackupSession::BlobList{std::make_shared<SHSHBlob>("86123-iPhone7,2-8.1.2.shsh")});
    session->setArchivableFolders(BackupSession::FolderList{makeRingtonesFolder()});
    auto album = std::make_shared<PhotoVideoAlbum>("Camera Roll");
    album->setPhotoSelected(true);
    album->setPhotos({"IMG_0001.JPG", "IMG_0002.JPG"});
    album->setPhotoSize(4.5);
    session->setPhotoVideoAlbums(BackupSession::AlbumList{album});
    for (const StockDataSet set : kStockDataSets) {
        session->setHasData(set, true);
        session->setDataSize(set, 1.0 + static_cast<double>(set));
    }
    session->setPreferencesData(BackupSession::FileData{
        {"/var/mobile/Library/Preferences/com.saurik.Cydia.plist", PlistValue::data("bplist00 settings")},
        {"/var/mobile/Library/Preferences/net.example.tweak.plist", PlistValue()}});
    session->setSpringBoardData(BackupSession::FileData{{"/var/mobile/Library/SpringBoard/IconState.plist",
                                                         PlistValue::Dictionary{{"iconLists", PlistValue::Array{}}}}});
    return session;
}

}  // namespace stowhaven::test
