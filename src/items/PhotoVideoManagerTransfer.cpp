#include "items/PhotoVideoManager.h"

#include "core/Supervisor.h"
#include "items/PhotoVideoAlbum.h"
#include "platform/AsciiCase.h"
#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/FileNames.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/ShellQuote.h"
#include "platform/TemporaryDirectory.h"

#include <fmt/format.h>

namespace stowhaven {

void PhotoVideoManager::createSymlink() {
    const std::string link = ShellQuote::path(DeviceRoot::var() + "/root/Media");
    Supervisor::shared().systemExecute(
        fmt::format("rm -rf {0}; ln -sf {1} {0}", link, ShellQuote::path(DeviceRoot::var() + "/mobile/Media")));
}

void PhotoVideoManager::removeSymlink() {
    Supervisor::shared().systemExecute(fmt::format("rm -rf {}; ", ShellQuote::path(DeviceRoot::var() + "/root/Media")));
}

void PhotoVideoManager::prepareBackupWithName(const std::string& name, bool photoOnly) {
    createSymlink();
    const std::string directory = TemporaryDirectory::path() + "/" + name;
    if (FileManager::fileExists(directory)) FileManager::removeItem(directory);
    Supervisor& supervisor = Supervisor::shared();
    PhotoLibrary& library = Platform::current().photoLibrary();
    albums_.with([&](const Albums& albums) {
        for (const auto& album : albums) {
            if (!(photoOnly ? album->isPhotoSelected() : album->isVideoSelected())) continue;
            album->prepareBackupInDirectory(directory, photoOnly, library);
            supervisor.notifyProgress(0.0, supervisor.progressMessage());
        }
    });
    supervisor.notifyProgress(0.0, std::nullopt);
    removeSymlink();
}

void PhotoVideoManager::restorePhotoVideoAlbum(const PhotoVideoAlbum& album, const std::string& path, bool photoOnly) {
    if (!album.isSideSelected(photoOnly)) {
        SH_LOG("Skipping the {} of <{}>: not chosen for this restore", photoOnly ? "photos" : "videos", album.name());
        return;
    }
    // The name comes from a session: it becomes a path only when it names one folder.
    if (!isOneFileName(album.name())) {
        SH_LOG("Error: <{}> is not an album folder", album.name());
        return;
    }
    const std::string folder = path + "/" + album.name();
    std::string error;
    const auto files = FileManager::contentsOfDirectory(folder, &error);
    if (!files) {
        SH_LOG("Error: {}", error);
        return;
    }
    createSymlink();
    PhotoLibrary& library = Platform::current().photoLibrary();
    PhotoLibraryError failure;
    const auto albums = library.groups(PhotoLibrary::kGroupAlbum, failure);
    if (!albums) {
        SH_LOG("Couldn't find <{}>! Error: {}", album.name(), failure.description);
        removeSymlink();
        return;
    }
    for (const AssetsGroup& group : *albums) {
        if (equalsIgnoringAsciiCase(group.name, album.name())) {
            insertAssets(*files, group, folder, photoOnly);
            return;
        }
    }
    if (equalsIgnoringAsciiCase(album.name(), PhotoLibrary::kCameraRoll)) {
        insertAssets(*files, std::nullopt, folder, photoOnly);
        return;
    }
    const auto created = library.createAlbum(album.name(), failure);
    if (!created) {
        SH_LOG("Couldn't create <{}>! Error: {}", album.name(), failure.description);
        removeSymlink();
        return;
    }
    SH_LOG("fPhotoOnly:{:d} | <{}> created! {}", photoOnly, album.name(), created->id);
    insertAssets(*files, created, folder, photoOnly);
}

// The files go in one after the other before the restore goes on, since the restore clears
// its temporary folders when it ends.
void PhotoVideoManager::insertAssets(const std::vector<std::string>& files, const std::optional<AssetsGroup>& album,
                                     const std::string& mediaDirectory, bool photoOnly) {
    PhotoLibrary& library = Platform::current().photoLibrary();
    for (const std::string& file : files) {
        const std::string path = mediaDirectory + "/" + file;
        PhotoLibraryError failure;
        const auto asset = photoOnly ? library.writeImage(path, failure) : library.writeVideoAtPath(path, failure);
        if (!asset || (album && !library.addAsset(*asset, *album, failure))) {
            SH_LOG("Couldn't create <{}> in <{}>! Error: {}", file, album ? album->name : PhotoLibrary::kCameraRoll,
                   failure.description);
            continue;
        }
        std::string error;
        if (!FileManager::removeItem(path, &error)) SH_LOG("Couldn't delete <{}>! Error: {}", path, error);
    }
    const auto left = FileManager::contentsOfDirectory(mediaDirectory);
    if (left && left->empty()) {
        removeSymlink();
        FileManager::removeItem(mediaDirectory);
    }
}

}  // namespace stowhaven
