#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// A group of assets of the photo library: the camera roll or an album.
struct AssetsGroup {
    std::int64_t id = 0;
    std::string name;
    unsigned type = 0;
    bool editable = false;
};

// One photo or video of the library.
struct Asset {
    std::int64_t id = 0;
};

// The file that stands for an asset: its name (one file name, never a path) and its size
// in bytes.
struct AssetRepresentation {
    std::string filename;
    std::uint64_t size = 0;
};

// Why a call of the library failed: a code of the library's own and its text.
struct PhotoLibraryError {
    long code = 0;
    std::string description;
};

// The device's photo library: its groups of assets and the files of the assets. Every call
// answers before it returns, on the calling thread.
class PhotoLibrary {
public:
    // The types of groups, to be combined.
    static constexpr unsigned kGroupLibrary = 1;
    static constexpr unsigned kGroupAlbum = 2;
    static constexpr unsigned kGroupEvent = 4;
    static constexpr unsigned kGroupFaces = 8;
    static constexpr unsigned kGroupSavedPhotos = 16;
    static constexpr unsigned kGroupPhotoStream = 32;
    static constexpr unsigned kGroupAll = 0xFFFFFFFFu;
    // The name of the saved photos album.
    static constexpr const char* kCameraRoll = "Camera Roll";

    // The owner refused the program the library, or the device refuses it to every program.
    static constexpr long kAccessUserDeniedError = -3311;
    static constexpr long kAccessGloballyDeniedError = -3312;

    enum class Filter { AllPhotos, AllVideos };

    virtual ~PhotoLibrary() = default;

    // The groups of the TYPES, the saved photos album ("Camera Roll") first.
    virtual std::optional<std::vector<AssetsGroup>> groups(unsigned types, PhotoLibraryError& error) = 0;
    // The group's assets of the kind, in the group's order.
    virtual std::vector<Asset> assets(const AssetsGroup& group, Filter filter) = 0;
    // The asset that stands for the group, if it has any.
    virtual std::optional<Asset> posterAsset(const AssetsGroup& group) = 0;
    // Nothing for an asset whose file is missing or is not a plain file of the media folder.
    virtual std::optional<AssetRepresentation> defaultRepresentation(const Asset& asset) = 0;
    // Up to LENGTH bytes of the asset's file from OFFSET into BUFFER: how many were read,
    // or nothing, with the reason in error.
    virtual std::optional<std::size_t> getBytes(const Asset& asset, char* buffer, std::uint64_t offset,
                                                std::size_t length, std::string& error) = 0;

    // The image or the video in the file at PATH becomes a new asset of the saved photos
    // album; the file itself stays.
    virtual std::optional<Asset> writeImage(const std::string& path, PhotoLibraryError& error) = 0;
    virtual std::optional<Asset> writeVideoAtPath(const std::string& path, PhotoLibraryError& error) = 0;
    // Adds the asset to an album that can be edited; true as well when the album can't be.
    virtual bool addAsset(const Asset& asset, const AssetsGroup& album, PhotoLibraryError& error) = 0;
    virtual std::optional<AssetsGroup> createAlbum(const std::string& name, PhotoLibraryError& error) = 0;
};

}  // namespace stowhaven
