#pragma once

#include "archive/ArchiveValue.h"
#include "items/SelectableItem.h"
#include "platform/services/PhotoLibrary.h"

#include <atomic>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// An album of the photo library, whose photos and videos can be backed up apart. A
// session keeps the album by the file names of its assets.
//
// Archived with the item's keys, "fEditable", and "photos" with "photoSize" when its
// photos are selected, "videos" with "videoSize" when its videos are.
class DefaultList;

class PhotoVideoAlbum : public SelectableItem {
public:
    // Nothing measured yet: its size is 0 until it is accounted for.
    explicit PhotoVideoAlbum(std::string name);
    // The archived fields, as a restore reads them: accounted for, each side that holds
    // assets selected unless the restore's default list of albums of that side leaves the
    // album out.
    explicit PhotoVideoAlbum(KeyedUnarchiver& coder);
    static std::shared_ptr<Codable> initWithCoder(KeyedUnarchiver& coder);
    // The albums whose photos, or those whose videos, the user chose by default for a
    // backup or for a restore ("Photos_Backup", "Videos_Restore"...); absent means all.
    static DefaultList& defaultAlbums(bool photos, bool backup);

    std::vector<std::string> classChain() const override { return {"PhotoVideoAlbum", "SelectableItem", "NSObject"}; }
    void encodeWithCoder(KeyedArchiver& coder) const override;

    bool isEditable() const { return fEditable_; }
    void setEditable(bool editable) { fEditable_ = editable; }
    bool isPhotoSelected() const { return fPhotoSelected_; }
    void setPhotoSelected(bool selected) { fPhotoSelected_ = selected; }
    bool isVideoSelected() const { return fVideoSelected_; }
    void setVideoSelected(bool selected) { fVideoSelected_ = selected; }
    // The photos' (or videos') flag.
    bool isSideSelected(bool photos) const { return photos ? fPhotoSelected_ : fVideoSelected_; }
    // A side can be chosen when it has something to take: bytes on the device, or files
    // named in a session.
    bool canSelectSide(bool photos) const;
    // Chooses or leaves a side; a side that can't be chosen stays out.
    void setSideSelected(bool photos, bool selected);
    // Spelled as the rest of the system spells it.
    bool isAllAcccounted() const { return fAllAccounted_; }
    void setAllAccounted(bool accounted) { fAllAccounted_ = accounted; }

    // The file names of the assets.
    const std::vector<std::string>& photos() const { return photos_; }
    void setPhotos(std::vector<std::string> names) { photos_ = std::move(names); }
    const std::vector<std::string>& videos() const { return videos_; }
    void setVideos(std::vector<std::string> names) { videos_ = std::move(names); }
    // Each side's size; the album's size is their sum.
    double photoSize() const { return photoSize_; }
    void setPhotoSize(double size);
    double videoSize() const { return videoSize_; }
    void setVideoSize(double size);
    const ArchiveValue& posterImage() const { return posterImage_; }

    // The library's group the album stands for; none for an album read from a session.
    const std::optional<AssetsGroup>& assetsGroup() const { return assetsGroup_; }
    void setAssetsGroup(AssetsGroup group) { assetsGroup_ = std::move(group); }
    // The file name of the asset that stands for the album.
    const std::optional<std::string>& posterName() const { return posterName_; }
    void setPosterName(std::optional<std::string> name) { posterName_ = std::move(name); }

    // Once, under the album's lock: each side's size from the library's files of the side's
    // assets; a side stays selected only when it has bytes, and so does the album.
    void calculateSize(PhotoLibrary& library);
    // Copies the files of the album's photos (or videos) into DIRECTORY/<album name>, each
    // under its own name, reporting the progress.
    void prepareBackupInDirectory(const std::string& directory, bool photoOnly, PhotoLibrary& library) const;

private:
    bool fEditable_ = false;
    bool fPhotoSelected_ = false;
    bool fVideoSelected_ = false;
    std::atomic<bool> fAllAccounted_{false};
    std::vector<std::string> photos_;
    std::vector<std::string> videos_;
    ArchiveValue posterImage_;
    double photoSize_ = 0;
    double videoSize_ = 0;
    std::optional<AssetsGroup> assetsGroup_;
    std::optional<std::string> posterName_;
    mutable std::mutex mutex_;
};

}  // namespace stowhaven
