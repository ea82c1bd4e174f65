// OneDrive's reply readers on any bytes: an item, a folder's listing, an upload's answer, the
// user's record, the quota, a throttling reply's wait and an error's message, damaged or
// hostile.

#include "FuzzSupport.h"
#include "storage/onedrive/SkyDriveReplies.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

using stowhaven::SkyDriveEntry;

void expectClean(const SkyDriveEntry& entry) {
    using namespace stowhaven;
    fuzz::expectCleanItem(entry, SkyDriveReplies::isItemId, "every id has the service's shape");
    fuzz::expect(entry.id.find('/') == std::string::npos && entry.id.find("..") == std::string::npos,
                 "no id reaches outside its path segment");
    fuzz::expect(!entry.parentId || SkyDriveReplies::isItemId(*entry.parentId),
                 "a parent's id has the service's shape");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace stowhaven;
    using fuzz::readOrSay;
    const std::string_view body = fuzz::bytesOf(data, size);
    if (const auto entry = readOrSay(SkyDriveReplies::entry, body)) expectClean(*entry);
    if (const auto file = readOrSay(SkyDriveReplies::uploadedFile, body)) {
        expectClean(*file);
        fuzz::expect(!file->isFolder, "an upload's reply gives a file");
    }
    if (const auto listing = readOrSay(SkyDriveReplies::listing, body)) {
        for (const SkyDriveEntry& entry : listing->entries) expectClean(entry);
    }
    readOrSay(SkyDriveReplies::userName, body);
    readOrSay(SkyDriveReplies::available, body);
    if (const auto seconds = SkyDriveReplies::throttleSeconds(body)) fuzz::expect(*seconds >= 0, "no wait is negative");
    fuzz::expect(!SkyDriveReplies::errorText(fuzz::refusedReply(400, body, "HTTP 400 Bad Request")).empty(),
                 "a failed request always has a message");
    return 0;
}
