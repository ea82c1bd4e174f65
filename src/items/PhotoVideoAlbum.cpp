#include "items/PhotoVideoAlbum.h"

#include "archive/KeyedArchiver.h"
#include "archive/KeyedUnarchiver.h"
#include "items/SelectionDefaults.h"

namespace stowhaven {

namespace {

// The albums whose photos, and those whose videos, are chosen by default.
DefaultList& defaultPhotoAlbums() {
    static DefaultList albums("Photos_Backup");
    return albums;
}
DefaultList& defaultVideoAlbums() {
    static DefaultList albums("Videos_Backup");
    return albums;
}

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

PhotoVideoAlbum::PhotoVideoAlbum(std::string name) : SelectableItem(std::move(name)) {}

PhotoVideoAlbum::PhotoVideoAlbum(KeyedUnarchiver& coder)
    : SelectableItem(coder),
      fEditable_(coder.decodeBoolForKey("fEditable")),
      fPhotoSelected_(defaultPhotoAlbums().contains(name())),
      fVideoSelected_(defaultVideoAlbums().contains(name())),
      fAllAccounted_(true),
      photos_(namesIn(coder.decodeArrayForKey("photos"))),
      videos_(namesIn(coder.decodeArrayForKey("videos"))),
      posterImage_(coder.decodeObjectForKey("posterImage")),
      photoSize_(coder.decodeDoubleForKey("photoSize")),
      videoSize_(coder.decodeDoubleForKey("videoSize")) {
    setSize(photoSize_ + videoSize_);
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
