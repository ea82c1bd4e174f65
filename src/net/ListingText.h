#pragma once

#include "net/FtpClient.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

// What the readers of a server's folder listing share, whatever its form: the lines, each
// ended by CRLF, which libcurl hands over as LF (a listing comes in ASCII type, where it also
// turns a lone CR into LF), and the names in them, which are a hostile server's data.
namespace ListingText {

// What a reader makes of one line without its line end: an entry, nothing for a line that
// names no entry to keep, or a refusal of the whole listing with WHY.
using Line = std::optional<std::optional<FtpEntry>>;
using LineReader = std::function<Line(std::string_view line, std::string& why)>;

// The entries READ finds in DATA's lines; nothing when it refuses one or the last line is
// cut short, and then PROBLEM tells why in a printable line.
std::optional<std::vector<FtpEntry>> entries(std::string_view data, const LineReader& read, std::string* problem);

// Why NAME can't be taken as one entry of the folder listed (empty, ".", "..", a slash, a
// control character...), as a printable phrase; nothing when it can.
std::optional<std::string> nameProblem(std::string_view name);

// TEXT as a log or a message may show it: quoted, control characters as "?", not too long.
std::string shown(std::string_view text);

}  // namespace ListingText

}  // namespace stowhaven
