#pragma once

#include "archive/TarListing.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

// The members of an archive exactly as the device's tar will read them when it unpacks it,
// or nothing, with a log line. The kind is decided from what the archive is; a bzip2
// archive is listed from a plain copy; and the listing must count as many members as tar
// itself reads from the archive. A listing that fails, for whatever reason (a damaged
// archive, a full temporary folder), never lets anything through.
std::optional<std::vector<TarListing::Member>> listArchiveMembers(const std::string& archive);
// The same for a plain tar archive cut into PARTS, read where they lie as if joined in their
// order, and by tar through a pipe: nothing is written but tar's own listing.
std::optional<std::vector<TarListing::Member>> listJoinedTarMembers(const std::vector<std::string>& parts);

// How many members tar read, from what `tar -tf --quoting-style=escape` printed followed by
// the line "Listed": one a line, since that style escapes a line break inside a name.
// Nothing when the mark isn't there, for tar stopped before the end of the archive.
std::optional<std::size_t> membersInTarOutput(std::string_view output);

}  // namespace stowhaven
