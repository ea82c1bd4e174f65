#pragma once

#include "platform/services/PhotoLibrary.h"

#include <memory>
#include <mutex>
#include <string>

namespace stowhaven {

class SqliteDatabase;

// The photo library as the device root keeps it: the files under <var>/mobile/Media (the
// camera roll in DCIM/100APPLE) and the library's database,
// <var>/mobile/Media/PhotoData/Photos.sqlite, of which these tables are the library's:
//
//   ZGENERICASSET (Z_PK, ZFILENAME, ZDIRECTORY, ZKIND, ZDATECREATED)
//       one row per asset: its file ZDIRECTORY/ZFILENAME below the media folder, ZKIND 0
//       for a photo and 1 for a video, the date in seconds since 2001.
//   ZGENERICALBUM (Z_PK, ZTITLE, ZKIND, ZEDITABLE, ZKEYASSET)
//       one row per group but the camera roll: its name, its group type (2 an album, 4 an
//       event, 8 faces, 32 the photo stream), whether assets may be added, its poster.
//   Z_ALBUMASSETS (ZALBUM, ZASSET, ZORDER)
//       which assets a group holds, in which order.
//
// The camera roll (the saved photos album) is no row: it holds every asset. A file written
// that is already there, same name and same bytes, is the asset that is there. Other tables of
// the database are left as they are. A file name, a folder or a link of the database that
// would lead out of the media folder makes its asset unreadable.
//
// Access is the owner's decision in the device's privacy record (PrivacyRecord): a row for
// the photos that does not allow the program refuses the library; no row lets it through.
class HostPhotoLibrary final : public PhotoLibrary {
public:
    static constexpr const char* kService = "kTCCServicePhotos";

    std::optional<std::vector<AssetsGroup>> groups(unsigned types, PhotoLibraryError& error) override;
    std::vector<Asset> assets(const AssetsGroup& group, Filter filter) override;
    std::optional<Asset> posterAsset(const AssetsGroup& group) override;
    std::optional<AssetRepresentation> defaultRepresentation(const Asset& asset) override;
    std::optional<std::size_t> getBytes(const Asset& asset, char* buffer, std::uint64_t offset, std::size_t length,
                                        std::string& error) override;

    std::optional<Asset> writeImage(const std::string& path, PhotoLibraryError& error) override;
    std::optional<Asset> writeVideoAtPath(const std::string& path, PhotoLibraryError& error) override;
    bool addAsset(const Asset& asset, const AssetsGroup& album, PhotoLibraryError& error) override;
    std::optional<AssetsGroup> createAlbum(const std::string& name, PhotoLibraryError& error) override;

private:
    enum class Kind { Photo = 0, Video = 1 };

    static std::string mediaFolder();
    static bool accessRefused(PhotoLibraryError& error);
    static std::unique_ptr<SqliteDatabase> openForReading();
    static std::unique_ptr<SqliteDatabase> openForWriting(PhotoLibraryError& error);
    // The asset's file, checked to be a plain file of the media folder.
    static std::optional<std::string> fileOf(const Asset& asset);
    std::optional<Asset> writeAsset(const std::string& path, Kind kind, PhotoLibraryError& error);
    static std::optional<Asset> assetWithSameFile(SqliteDatabase& database, const std::string& path,
                                                  const std::string& existing, const std::string& name);

    // One writer at a time, so that two new assets never take the same file name.
    std::mutex writing_;
};

}  // namespace stowhaven
