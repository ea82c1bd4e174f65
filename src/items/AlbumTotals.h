#pragma once

#include "items/PhotoVideoAlbum.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace stowhaven {

// The sizes (megabytes) and counts of photos and videos over a list of albums: of all of
// them, or of the albums whose side is selected.
class AlbumTotals {
public:
    using Albums = std::vector<std::shared_ptr<PhotoVideoAlbum>>;

    static double photoSize(const Albums& albums, bool selectedOnly);
    static double videoSize(const Albums& albums, bool selectedOnly);
    static std::size_t photoCount(const Albums& albums, bool selectedOnly);
    static std::size_t videoCount(const Albums& albums, bool selectedOnly);
};

}  // namespace stowhaven
