#pragma once

#include "items/AlbumTotals.h"
#include "platform/dispatch/Monitored.h"
#include "platform/dispatch/NotificationCenter.h"
#include "platform/services/PhotoLibrary.h"

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

class PhotoVideoAlbum;

// The albums of the device's photo library, each with its photos and videos accounted for.
// One instance lives as long as the process. Until the library has been read it holds no
// album and counts as not accounted for.
class PhotoVideoManager {
public:
    using Albums = AlbumTotals::Albums;

    static PhotoVideoManager& shared();

    // A copy of the list, taken under its lock once a reading of the library under way ends.
    Albums photoVideoAlbums() const;
    // The library's albums, once every one of them is accounted for.
    void setPhotoVideoAlbums(Albums albums, bool allAccounted);
    // Every album is measured and there is something to take.
    bool isAllAcccounted() const { return fAllAccounted_; }
    // Reads the library again, with the photo and video scans that are on: one album per
    // group that has assets of a side switched on, each side chosen when the user's default
    // list of that side names it (or when there is no such list), the camera roll first.
    // Each album is measured on a global queue ("ALBUM_ACCOUNTED" on the main queue, then
    // "ALL_ALBUMS_ACCOUNTED"); the call returns once all of them are. A library that refuses
    // access leaves no album, the reason in libraryErrorMessage() and an alert.
    void reset();
    // Why the library could not be read at the last reset, if it could not.
    std::optional<std::string> libraryErrorMessage() const;
    // "Camera Roll" first, whatever its case, then by name ignoring case.
    static void sortAlbums(Albums& albums);
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
    // folder per album.
    void prepareBackupWithName(const std::string& name, bool photoOnly);
    // Puts the files of an album whose side is chosen, unpacked into PATH/<album name>, into
    // the library's album of that name, made when missing; the camera roll's go into the
    // camera roll alone. Each file is deleted once the library has it, and the folder once
    // it is empty.
    void restorePhotoVideoAlbum(const PhotoVideoAlbum& album, const std::string& path, bool photoOnly);

private:
    PhotoVideoManager() = default;

    // The albums of the library, each measured; false when there is no group to read.
    bool readLibrary();
    // The album of the group, measured by a block of SIZING once the whole list stands.
    void buildPhotoVideoAlbumUsing(const AssetsGroup& group, PhotoLibrary& library,
                                   std::vector<std::function<void()>>& sizing);
    void handleAlbumAccounted();
    void insertAssets(const std::vector<std::string>& files, const std::optional<AssetsGroup>& album,
                      const std::string& mediaDirectory, bool photoOnly);

    // Runs WORK on the list once no reading of the library is under way.
    template <typename Work>
    decltype(auto) withSettledAlbums(Work&& work) const {
        std::unique_lock lock(state_);
        scanEnded_.wait(lock, [this] { return scansUnderWay_ == 0; });
        lock.unlock();
        return albums_.with(std::forward<Work>(work));
    }

    std::atomic<bool> fAllAccounted_{false};
    Monitored<Albums> albums_;
    // "PHOTOS" and "VIDEOS" to the default lists of album names.
    std::map<std::string, std::optional<std::vector<std::string>>> defaultAssetsGroup_;
    mutable std::mutex state_;
    mutable std::condition_variable scanEnded_;
    int scansUnderWay_ = 0;
    std::optional<std::string> libraryErrorMessage_;
    std::optional<NotificationCenter::ObserverToken> accountedObserver_;
};

}  // namespace stowhaven
