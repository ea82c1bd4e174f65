#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

// The members of a plain (uncompressed) tar archive, read header by header without
// reading the data, so that a restore can judge every name before the system's tar
// extracts anything, and so that a small archive held in memory can be read without
// extracting it at all. Archives come from storage and may be crafted: whatever the
// system's tar could read differently from this listing is refused rather than guessed.
class TarListing {
public:
    // Unknown type letters count as Other; tar extracts those as plain files at their name.
    enum class Type { File, Directory, SymbolicLink, HardLink, Other };

    struct Member {
        // As stored, with no normalisation: the pax "path" (or "GNU.sparse.name"), else the
        // GNU long name, else the ustar prefix and name.
        std::string name;
        // A plain-file entry whose name ends in "/" is a Directory, as tar extracts it.
        Type type = Type::File;
        // As stored, for the two kinds of link only; empty for every other type.
        std::string linkTarget;
        // The bytes of data the member carries in the archive (for a sparse file, the
        // stored parts only).
        std::uint64_t size = 0;
        // Where those bytes start in the archive.
        std::uint64_t dataOffset = 0;
        // Seconds since 1970 as stored (the pax "mtime" where there is one, whole seconds);
        // 0 when the field can't be read, which tar only warns about.
        std::int64_t modificationTime = 0;
    };

    // Reads ustar, pax, GNU and old (v7) headers. The listing ends at the first zero block,
    // where tar stops too, or at the end of the file between members. Nothing, with a short
    // reason in `error`, for a file that can't be read or a damaged or doubtful archive: a
    // bad checksum, a truncated header or data, a size field beyond the file, an extension
    // header over 1 MiB or malformed, a NUL inside a long name or a long name that runs on
    // past its size (as GNU tar reads it, to the next NUL), an extension header that
    // belongs to no member, a pax global header that would rename members, or data on a
    // directory, link or device (tars disagree on whether that data is skipped).
    static std::optional<std::vector<Member>> read(const std::string& path, std::string* error = nullptr);
    // The same for an archive cut into PARTS, read where they lie as if joined in their order.
    static std::optional<std::vector<Member>> readJoined(const std::vector<std::string>& parts,
                                                         std::string* error = nullptr);
    // The same for an archive in memory; "can't be read" doesn't arise.
    static std::optional<std::vector<Member>> readBytes(std::string_view archive, std::string* error = nullptr);

    // Whether BLOCK, the first 512 bytes of a file, is a tar header with a valid checksum,
    // or the zero block of an empty archive: how tar itself tells a plain archive from a
    // compressed one.
    static bool isHeaderBlock(std::string_view block);
};

}  // namespace stowhaven
