#pragma once

#include "archive/ArchiveValue.h"
#include "items/SelectableItem.h"

#include <mutex>
#include <string>
#include <vector>

namespace stowhaven {

// An album of the photo library, whose photos and videos can be backed up apart. A
// session keeps the album by the file names of its assets.
//
// Archived with the item's keys, "fEditable", and "photos" with "photoSize" when its
// photos are selected, "videos" with "videoSize" when its videos are.
class PhotoVideoAlbum : public SelectableItem {
public:
    explicit PhotoVideoAlbum(std::string name);
    // The archived fields; accounted for, each side selected when the default list of
    // albums of that side holds the album's name.
    explicit PhotoVideoAlbum(KeyedUnarchiver& coder);
    static std::shared_ptr<Codable> initWithCoder(KeyedUnarchiver& coder);

    std::vector<std::string> classChain() const override { return {"PhotoVideoAlbum", "SelectableItem", "NSObject"}; }
    void encodeWithCoder(KeyedArchiver& coder) const override;

    bool isEditable() const { return fEditable_; }
    void setEditable(bool editable) { fEditable_ = editable; }
    bool isPhotoSelected() const { return fPhotoSelected_; }
    void setPhotoSelected(bool selected) { fPhotoSelected_ = selected; }
    bool isVideoSelected() const { return fVideoSelected_; }
    void setVideoSelected(bool selected) { fVideoSelected_ = selected; }
    // Spelled as the rest of the system spells it.
    bool isAllAcccounted() const { return fAllAccounted_; }
    void setAllAccounted(bool accounted) { fAllAccounted_ = accounted; }

    // The file names of the assets.
    const std::vector<std::string>& photos() const { return photos_; }
    void setPhotos(std::vector<std::string> names) { photos_ = std::move(names); }
    const std::vector<std::string>& videos() const { return videos_; }
    void setVideos(std::vector<std::string> names) { videos_ = std::move(names); }
    double photoSize() const { return photoSize_; }
    void setPhotoSize(double size) { photoSize_ = size; }
    double videoSize() const { return videoSize_; }
    void setVideoSize(double size) { videoSize_ = size; }
    const ArchiveValue& posterImage() const { return posterImage_; }

private:
    bool fEditable_ = false;
    bool fPhotoSelected_ = false;
    bool fVideoSelected_ = false;
    bool fAllAccounted_ = false;
    std::vector<std::string> photos_;
    std::vector<std::string> videos_;
    ArchiveValue posterImage_;
    double photoSize_ = 0;
    double videoSize_ = 0;
};

}  // namespace stowhaven
