#include "items/PhotoVideoAlbum.h"

#include "archive/KeyedArchiver.h"
#include "archive/KeyedUnarchiver.h"
#include "core/FileSizes.h"
#include "items/SelectionDefaults.h"

namespace stowhaven {

namespace {

constexpr double kBytesPerMegabyte = FileSizes::kBytesPerMegabyte;

std::vector<std::string> namesIn(const std::optional<ArchiveValue::Array>& array) {
    std::vector<std::string> names;
    for (const ArchiveValue& element : array.value_or(ArchiveValue::Array{})) {
        if (const std::string* name = element.asString()) names.push_back(*name);
    }
    return names;
}

ArchiveValue arrayOfNames(const std::vector<std::string>& names) {
    return ArchiveValue::mutableArray(ArchiveValue::Array(names.begin(), names.end()));
}

}  // namespace

DefaultList& PhotoVideoAlbum::defaultAlbums(bool photos, bool backup) {
    static SelectionDefaults photoAlbums("Photos_Backup", "Photos_Restore");
    static SelectionDefaults videoAlbums("Videos_Backup", "Videos_Restore");
    return (photos ? photoAlbums : videoAlbums).side(backup);
}

namespace {

// A session's album comes back into the library unless the restore's list leaves it out.
bool chosenForRestore(bool photos, const std::string& name) {
    DefaultList& list = PhotoVideoAlbum::defaultAlbums(photos, false);
    return !list.names() || list.contains(name);
}

}  // namespace

PhotoVideoAlbum::PhotoVideoAlbum(std::string name) : SelectableItem(std::move(name)) { setSize(0); }

PhotoVideoAlbum::PhotoVideoAlbum(KeyedUnarchiver& coder)
    : SelectableItem(coder),
      fEditable_(coder.decodeBoolForKey("fEditable")),
      fAllAccounted_(true),
      photos_(namesIn(coder.decodeArrayForKey("photos"))),
      videos_(namesIn(coder.decodeArrayForKey("videos"))),
      posterImage_(coder.decodeObjectForKey("posterImage")),
      photoSize_(coder.decodeDoubleForKey("photoSize")),
      videoSize_(coder.decodeDoubleForKey("videoSize")) {
    setSize(photoSize_ + videoSize_);
    fPhotoSelected_ = canSelectSide(true) && chosenForRestore(true, name());
    fVideoSelected_ = canSelectSide(false) && chosenForRestore(false, name());
}

bool PhotoVideoAlbum::canSelectSide(bool photos) const {
    // A session's album was accounted for when it was made, and keeps its files' names.
    if (!assetsGroup_) return !(photos ? photos_ : videos_).empty();
    return (photos ? photoSize_ : videoSize_) > 0;
}

void PhotoVideoAlbum::setSideSelected(bool photos, bool selected) {
    (photos ? fPhotoSelected_ : fVideoSelected_) = selected && canSelectSide(photos);
}

void PhotoVideoAlbum::setPhotoSize(double size) {
    photoSize_ = size;
    setSize(photoSize_ + videoSize_);
}

void PhotoVideoAlbum::setVideoSize(double size) {
    videoSize_ = size;
    setSize(photoSize_ + videoSize_);
}

void PhotoVideoAlbum::calculateSize(PhotoLibrary& library) {
    std::lock_guard lock(mutex_);
    if (fAllAccounted_) return;
    const auto bytesOf = [&](PhotoLibrary::Filter filter) {
        std::uint64_t bytes = 0;
        if (!assetsGroup_) return bytes;
        for (const Asset& asset : library.assets(*assetsGroup_, filter)) {
            if (const auto representation = library.defaultRepresentation(asset)) bytes += representation->size;
        }
        return bytes;
    };
    if (!photos_.empty())
        setPhotoSize(static_cast<double>(bytesOf(PhotoLibrary::Filter::AllPhotos)) / kBytesPerMegabyte);
    if (!videos_.empty())
        setVideoSize(static_cast<double>(bytesOf(PhotoLibrary::Filter::AllVideos)) / kBytesPerMegabyte);
    fPhotoSelected_ = fPhotoSelected_ && photoSize_ > 0;
    fVideoSelected_ = fVideoSelected_ && videoSize_ > 0;
    setSelected(size() > 0);
    fAllAccounted_ = true;
}

std::shared_ptr<Codable> PhotoVideoAlbum::initWithCoder(KeyedUnarchiver& coder) {
    return std::make_shared<PhotoVideoAlbum>(coder);
}

void PhotoVideoAlbum::encodeWithCoder(KeyedArchiver& coder) const {
    if (fPhotoSelected_) {
        coder.encodeObject(arrayOfNames(photos_), "photos");
        coder.encodeDouble(photoSize_, "photoSize");
    }
    if (fVideoSelected_) {
        coder.encodeObject(arrayOfNames(videos_), "videos");
        coder.encodeDouble(videoSize_, "videoSize");
    }
    coder.encodeBool(fEditable_, "fEditable");
    SelectableItem::encodeWithCoder(coder);
}

}  // namespace stowhaven
