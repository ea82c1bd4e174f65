#include "items/PhotoVideoManager.h"

#include "core/CydiaFileManager.h"
#include "core/Supervisor.h"

namespace stowhaven {

PhotoVideoManager& PhotoVideoManager::shared() {
    static PhotoVideoManager manager;
    return manager;
}

void PhotoVideoManager::setPhotoVideoAlbums(Albums albums, bool allAccounted) {
    albums_.set(std::move(albums));
    fAllAccounted_ = allAccounted;
}

PhotoVideoManager::Albums PhotoVideoManager::photoVideoAlbums() const {
    return withSettledAlbums([](const Albums& albums) { return albums; });
}

bool PhotoVideoManager::hasDefaultPhotoVideo() {
    const Supervisor& supervisor = Supervisor::shared();
    for (const char* key : {"Photos_Backup", "Videos_Backup"}) {
        const auto albums = supervisor.lowLevelGetArrayPreferencesDataForKey(key);
        if (albums && !albums->empty()) return true;
    }
    return false;
}

double PhotoVideoManager::totalPhotoSize() const {
    return withSettledAlbums([](const Albums& albums) { return AlbumTotals::photoSize(albums, false); });
}

double PhotoVideoManager::selectedPhotoSize() const {
    return withSettledAlbums([](const Albums& albums) { return AlbumTotals::photoSize(albums, true); });
}

double PhotoVideoManager::totalVideoSize() const {
    return withSettledAlbums([](const Albums& albums) { return AlbumTotals::videoSize(albums, false); });
}

double PhotoVideoManager::selectedVideoSize() const {
    return withSettledAlbums([](const Albums& albums) { return AlbumTotals::videoSize(albums, true); });
}

std::size_t PhotoVideoManager::totalPhotoCount() const {
    return withSettledAlbums([](const Albums& albums) { return AlbumTotals::photoCount(albums, false); });
}

std::size_t PhotoVideoManager::selectedPhotoCount() const {
    return withSettledAlbums([](const Albums& albums) { return AlbumTotals::photoCount(albums, true); });
}

std::size_t PhotoVideoManager::totalVideoCount() const {
    return withSettledAlbums([](const Albums& albums) { return AlbumTotals::videoCount(albums, false); });
}

std::size_t PhotoVideoManager::selectedVideoCount() const {
    return withSettledAlbums([](const Albums& albums) { return AlbumTotals::videoCount(albums, true); });
}

}  // namespace stowhaven
