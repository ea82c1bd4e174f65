#pragma once

#include <optional>
#include <string>

namespace stowhaven {

// Sizes of what a backup would take, in megabytes. One measure serves every caller, so
// that the items, the data sets and the free-space tests agree.
class FileSizes {
public:
    // What a walk that fails answers: -2^31.
    static constexpr double kUnmeasurable = -2147483648.0;
    static constexpr double kBytesPerMegabyte = 1048576.0;

    // A file's size, or the sum of the files below a folder. Below a folder, entries under
    // "Caches/" or "Cookies/" and ".DS_Store" files never count. Without ORIGINAL PATH
    // everything else counts; with the photo library's folders it selects the media (see
    // photosOriginalPath() and videosOriginalPath()); any other one counts nothing.
    static double getFileSizeAtPath(const std::string& path, const std::optional<std::string>& originalPath);
    // The size of everything at the path, and 0 for what can't be measured.
    static double sizeOrNothing(const std::string& path);

    // The original path that measures the photos of the DCIM and PhotoData folders: every
    // file but ".mov" ones.
    static std::string photoLibraryOriginalPath();
    // The original path that measures the videos of the DCIM folder: every file but
    // ".jpg", ".jpeg" and ".png" ones.
    static std::string cameraRollOriginalPath();
};

}  // namespace stowhaven
