#pragma once

#include "net/WebDavClient.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

// A PROPFIND reply (207 Multi-Status) read with its names as data.
struct Multistatus {
    // The listed path itself, when the reply names it.
    std::optional<WebDavEntry> listed;
    // What lies directly in the listed folder, names decoded.
    std::vector<WebDavEntry> entries;
};

// The PROPFIND exchange of a listing: what the client asks for and how it reads the reply.
namespace MultistatusReply {

// A reply longer than this is refused unread.
constexpr std::size_t kLargestReply = 16 * 1024 * 1024;
// Elements nested deeper than this are refused before the XML parser sees them; a true
// reply goes seven deep.
constexpr int kDeepestNesting = 32;

// The body of every PROPFIND: the properties of a folder's entries, in the order the
// server is asked for them.
const std::string& propertyRequest();

// The reply to a PROPFIND of LISTEDPATH, elements known by their namespace whatever the
// prefix. Refused whole, with PROBLEM, when it is too large or too deep, not XML, not a
// multistatus, or names an entry that is not one clean name directly under LISTEDPATH.
std::optional<Multistatus> parse(std::string_view reply, const std::string& listedPath, std::string& problem);

}  // namespace MultistatusReply

}  // namespace stowhaven
