#include "flows/PhotoVideoViewController.h"

#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "items/PhotoVideoManager.h"

namespace stowhaven {

namespace {

AlbumTotals::Albums albumsOf(bool backup) {
    if (backup) return PhotoVideoManager::shared().photoVideoAlbums();
    const auto session = CydiaFileManager::shared().currentBackupSession();
    return session ? session->photoVideoAlbums().value_or(AlbumTotals::Albums{}) : AlbumTotals::Albums{};
}

SelectionRows sideRows(const AlbumTotals::Albums& albums, bool photos) {
    SelectionRows rows;
    for (const auto& album : albums) rows.push_back(std::make_shared<AlbumRow>(album, photos));
    return rows;
}

}  // namespace

PhotoVideoViewController::PhotoVideoViewController()
    : backupMode_(gIsBackupMode),
      albums_(albumsOf(backupMode_)),
      photos_(sideRows(albums_, true)),
      videos_(sideRows(albums_, false)) {}

void PhotoVideoViewController::saveAsDefault() const {
    CydiaFileManager::saveDefaultList(AlbumTotals::chosenNames(albums_, true), "Photos");
    CydiaFileManager::saveDefaultList(AlbumTotals::chosenNames(albums_, false), "Videos");
}

}  // namespace stowhaven
