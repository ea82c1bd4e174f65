#pragma once

#include "net/FtpClient.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

// A folder's listing as LIST gives it, for servers that don't know MLSD. LIST has no fixed
// form; two are read, one entry a line (ListingText):
//   the Unix "ls -l" form  "drwxr-xr-x 2 owner group 4096 Nov 24 10:00 name" (or "Nov 24  2025"),
//                          a symbolic link as "name -> target";
//   the DOS form           "11-24-26  10:00AM       <DIR>          name" or "... 1234 name".
// A line of neither form (and a device, pipe or socket) is skipped and logged, never guessed
// at; "total N", "." and ".." go quietly. As with MLSD, a name that isn't one clean path
// component, a size beyond 64 bits or a listing cut short refuses the whole listing, and
// PROBLEM tells why in a printable line. The DOS form pads before the name, so a name there
// can't begin with a blank.
namespace ListListing {

std::optional<std::vector<FtpEntry>> parse(std::string_view data, std::string* problem);

}  // namespace ListListing

}  // namespace stowhaven
