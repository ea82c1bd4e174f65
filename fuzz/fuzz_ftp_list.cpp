// The readers of an FTP server's folder listing on any bytes, MLSD's machine form and LIST's
// Unix and DOS forms alike, as a damaged or hostile server sends them.

#include "FuzzSupport.h"
#include "net/ListListing.h"
#include "net/MlsdListing.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace stowhaven;

void checkEntries(const std::optional<std::vector<FtpEntry>>& entries, const std::string& problem,
                  std::string_view bytes) {
    fuzz::expect(entries.has_value() || !problem.empty(), "a refused listing says why");
    fuzz::expect(std::none_of(problem.begin(), problem.end(), [](char c) { return c == '\n' || c == '\r'; }),
                 "the reason is one line");
    if (!entries) return;
    fuzz::expect(entries->size() <= static_cast<std::size_t>(std::count(bytes.begin(), bytes.end(), '\n')),
                 "at most one entry a line");
    for (const FtpEntry& entry : *entries) {
        fuzz::expect(isOneFileName(entry.name), "every name is one clean path component");
        fuzz::expect(bytes.find(entry.name) != std::string_view::npos, "every name stands in the listing");
        fuzz::expect(entry.size >= 0, "no size is negative");
        fuzz::expect(!(entry.isDirectory && entry.isSymbolicLink), "a folder or a link, not both");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes = fuzz::bytesOf(data, size);
    std::string problem;
    checkEntries(MlsdListing::parse(bytes, &problem), problem, bytes);
    problem.clear();
    checkEntries(ListListing::parse(bytes, &problem), problem, bytes);
    return 0;
}
