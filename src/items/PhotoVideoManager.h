#pragma once

#include "items/AlbumTotals.h"
#include "platform/dispatch/Monitored.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>

namespace stowhaven {

class PhotoVideoAlbum;

// The albums of the device's photo library, each with its photos and videos accounted for.
// One instance lives as long as the process. Until the library has been read it holds no
// album and counts as not accounted for.
class PhotoVideoManager {
public:
    using Albums = AlbumTotals::Albums;

    static PhotoVideoManager& shared();

    // A copy of the list, taken under its lock.
    Albums photoVideoAlbums() const { return albums_.copy(); }
    // The library's albums, once every one of them is accounted for.
    void setPhotoVideoAlbums(Albums albums, bool allAccounted);
    // Every album is measured and there is something to take.
    bool isAllAcccounted() const { return fAllAccounted_; }
    // Reads the library again: no album is left and the catalogue holds no photo or video
    // data until the albums are accounted for anew. The library's stand-in has no album.
    void reset();
    // The user's default choice of albums names some, for photos or for videos.
    static bool hasDefaultPhotoVideo();

    double totalPhotoSize() const;
    double selectedPhotoSize() const;
    double totalVideoSize() const;
    double selectedVideoSize() const;
    std::size_t totalPhotoCount() const;
    std::size_t selectedPhotoCount() const;
    std::size_t totalVideoCount() const;
    std::size_t selectedVideoCount() const;

    // The library is reached through <var>/root/Media, a link to the media folder that
    // library work needs in place.
    static void createSymlink();
    static void removeSymlink();
    // Copies the assets of the albums whose photos (or videos) are chosen into TMP/NAME, one
    // folder per album. The library's stand-in holds no asset data, so the folders stay
    // empty until the library itself is read.
    void prepareBackupWithName(const std::string& name, bool photoOnly);
    // Puts the files of an album, unpacked into PATH/<album name>, back into the library.
    // The library's stand-in takes no assets: the files stay where they are, as the log says.
    void restorePhotoVideoAlbum(const PhotoVideoAlbum& album, const std::string& path, bool photoOnly);

private:
    PhotoVideoManager() = default;

    std::atomic<bool> fAllAccounted_{false};
    Monitored<Albums> albums_;
};

}  // namespace stowhaven
