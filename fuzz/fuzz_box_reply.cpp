// Box's reply readers on any bytes: a folder, a page of items, an upload's answer, the
// user's record, a token grant (the OAuth 2 reader the cloud engines share) and an error's
// message, damaged or hostile.

#include "FuzzSupport.h"
#include "storage/box/BoxReplies.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

namespace {

using stowhaven::BoxItem;

void expectClean(const BoxItem& item) {
    stowhaven::fuzz::expectCleanItem(
        item,
        [](const std::string& id) {
            return !id.empty() && std::all_of(id.begin(), id.end(), [](char c) { return c >= '0' && c <= '9'; });
        },
        "every id is plain digits");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace stowhaven;
    using fuzz::readOrSay;
    const std::string_view body = fuzz::bytesOf(data, size);
    if (const auto folder = readOrSay(BoxReplies::folder, body)) {
        expectClean(*folder);
        fuzz::expect(folder->isFolder, "a folder's reply gives a folder");
    }
    if (const auto file = readOrSay(BoxReplies::uploadedFile, body)) {
        expectClean(*file);
        fuzz::expect(!file->isFolder, "an upload's reply gives a file");
    }
    if (const auto page = readOrSay(BoxReplies::itemPage, body)) {
        fuzz::expect(page->totalCount >= 0, "no total is negative");
        for (const BoxItem& item : page->entries) expectClean(item);
    }
    readOrSay(BoxReplies::user, body);
    fuzz::checkOAuth2Grant(body);
    fuzz::expect(!BoxReplies::errorText(fuzz::refusedReply(400, body, "HTTP 400 Bad Request")).empty(),
                 "a failed request always has a message");
    return 0;
}
