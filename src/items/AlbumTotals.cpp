#include "items/AlbumTotals.h"

namespace stowhaven {

namespace {

template <typename Measure>
auto sumOver(const AlbumTotals::Albums& albums, bool selectedOnly, bool photos, Measure measure) {
    decltype(measure(std::declval<const PhotoVideoAlbum&>())) sum{};
    for (const auto& album : albums) {
        const bool selected = photos ? album->isPhotoSelected() : album->isVideoSelected();
        if (!selectedOnly || selected) sum += measure(*album);
    }
    return sum;
}

}  // namespace

double AlbumTotals::photoSize(const Albums& albums, bool selectedOnly) {
    return sumOver(albums, selectedOnly, true, [](const PhotoVideoAlbum& album) { return album.photoSize(); });
}

double AlbumTotals::videoSize(const Albums& albums, bool selectedOnly) {
    return sumOver(albums, selectedOnly, false, [](const PhotoVideoAlbum& album) { return album.videoSize(); });
}

std::size_t AlbumTotals::photoCount(const Albums& albums, bool selectedOnly) {
    return sumOver(albums, selectedOnly, true, [](const PhotoVideoAlbum& album) { return album.photos().size(); });
}

std::size_t AlbumTotals::videoCount(const Albums& albums, bool selectedOnly) {
    return sumOver(albums, selectedOnly, false, [](const PhotoVideoAlbum& album) { return album.videos().size(); });
}

std::optional<std::vector<std::string>> AlbumTotals::chosenNames(const Albums& albums, bool photos) {
    std::vector<std::string> names;
    std::size_t choosable = 0;
    for (const auto& album : albums) {
        if (album->canSelectSide(photos)) ++choosable;
        if (album->isSideSelected(photos)) names.push_back(album->name());
    }
    // An album with nothing of that side to take counts neither way.
    if (names.size() == choosable) return std::nullopt;
    return names;
}

}  // namespace stowhaven
