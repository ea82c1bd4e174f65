#include "items/PhotoVideoManager.h"

#include "core/Supervisor.h"
#include "items/PhotoVideoAlbum.h"
#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/ShellQuote.h"
#include "platform/TemporaryDirectory.h"

#include <fmt/format.h>

namespace stowhaven {

namespace {

// An album's name becomes a folder name: one that would lead elsewhere is refused.
bool isFolderName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

}  // namespace

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
    for (const auto& album : photoVideoAlbums()) {
        if (!(photoOnly ? album->isPhotoSelected() : album->isVideoSelected())) continue;
        if (!isFolderName(album->name())) {
            SH_LOG("Skipping album <{}>: not a folder name", album->name());
            continue;
        }
        const std::string folder = directory + "/" + album->name();
        std::string error;
        if (!FileManager::createDirectory(folder, true, &error)) SH_LOG("Can't create <{}>! Error: {}", folder, error);
        supervisor.notifyProgress(0.0, supervisor.progressMessage());
    }
    supervisor.notifyProgress(0.0, std::nullopt);
    removeSymlink();
}

void PhotoVideoManager::restorePhotoVideoAlbum(const PhotoVideoAlbum& album, const std::string& path, bool photoOnly) {
    const std::string folder = path + "/" + album.name();
    std::string error;
    const auto files = isFolderName(album.name()) ? FileManager::contentsOfDirectory(folder, &error) : std::nullopt;
    if (!files) {
        SH_LOG("Error: {}", error.empty() ? "not a folder name" : error);
        return;
    }
    SH_LOG("fPhotoOnly:{:d} | <{}>: {} file(s) for a library that takes none", photoOnly, album.name(), files->size());
}

}  // namespace stowhaven
