#pragma once

#include "net/FtpClient.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

// A folder's listing in the machine form of MLSD: one "fact=value;...; name" line per entry,
// each ended by CRLF (ListingText). Read strictly, since the server may be hostile: a line of
// another form, a fact that can't be read, a name that isn't one clean path component or a
// listing cut short refuses the whole listing, and PROBLEM tells why in a printable line.
namespace MlsdListing {

std::optional<std::vector<FtpEntry>> parse(std::string_view data, std::string* problem);

}  // namespace MlsdListing

}  // namespace stowhaven
