#pragma once

#include "items/PhotoVideoAlbum.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
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
    // What a default list of albums keeps: the names of those whose side is chosen; none,
    // which stands for all, when every album that has something of that side is chosen.
    // An empty list chooses no album.
    static std::optional<std::vector<std::string>> chosenNames(const Albums& albums, bool photos);
};

}  // namespace stowhaven
