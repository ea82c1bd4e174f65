// Google Drive's reply readers on any bytes: a file record, a page of a files list, the
// account's record and quota, a token grant (the OAuth 2 reader the cloud engines share) and
// an error's message, damaged or hostile.

#include "FuzzSupport.h"
#include "storage/gdrive/GDriveReplies.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>

namespace {

using stowhaven::GDriveFile;

void expectClean(const GDriveFile& file) {
    using namespace stowhaven;
    fuzz::expectCleanItem(
        file,
        [](const std::string& id) {
            return !id.empty() && std::all_of(id.begin(), id.end(), [](char c) {
                return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' ||
                       c == '-';
            });
        },
        "every id holds only letters, digits, _ and -");
    fuzz::expect(!file.size || *file.size >= 0, "no size is negative");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace stowhaven;
    using fuzz::readOrSay;
    const std::string_view body = fuzz::bytesOf(data, size);
    if (const auto file = readOrSay(GDriveReplies::file, body)) expectClean(*file);
    if (const auto page = readOrSay(GDriveReplies::filePage, body)) {
        for (const GDriveFile& file : page->files) expectClean(file);
        fuzz::expect(!page->nextPageToken || !page->nextPageToken->empty(), "a page token given is not empty");
    }
    if (const auto about = readOrSay(GDriveReplies::about, body)) {
        fuzz::expect(std::isfinite(about->usageInDrive) && about->usageInDrive >= 0, "the usage is a count of bytes");
        fuzz::expect(!about->limit || *about->limit >= 0, "the limit is a count of bytes");
    }
    fuzz::checkOAuth2Grant(body);
    fuzz::expect(!GDriveReplies::errorText(fuzz::refusedReply(403, body, "HTTP 403 Forbidden")).empty(),
                 "a failed request always has a message");
    return 0;
}
