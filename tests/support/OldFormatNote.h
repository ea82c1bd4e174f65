#pragma once

#include <string>

namespace stowhaven::test {

// A note in the address book's old format, made in FOLDER (a folder of the test's own) as
// older versions made it: a gzip tar of the package list, dated 2010-06-01 12:00:00 UTC,
// and of the SpringBoard's settings (battery percentage on), uuencoded in Base64.
std::string oldFormatNote(const std::string& folder, const std::string& rawData);

}  // namespace stowhaven::test
