// Box's reply readers on any bytes: a folder, a page of items, an upload's answer, the
// user's record, a token grant (the OAuth 2 reader the cloud engines share) and an error's
// message, damaged or hostile.

#include "FuzzSupport.h"
#include "net/OAuth2Grant.h"
#include "platform/FileNames.h"
#include "storage/box/BoxReplies.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

namespace {

using stowhaven::BoxItem;

void expectClean(const BoxItem& item) {
    using namespace stowhaven;
    fuzz::expect(
        !item.id.empty() && std::all_of(item.id.begin(), item.id.end(), [](char c) { return c >= '0' && c <= '9'; }),
        "every id is plain digits");
    fuzz::expect(isOneFileName(item.name), "every name is one clean path component");
}

template <typename Reader>
auto readOrSay(Reader reader, std::string_view body) {
    std::string error;
    auto value = reader(body, error);
    stowhaven::fuzz::expect(value.has_value() || !error.empty(), "a refused reply says why");
    return value;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace stowhaven;
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
    if (const auto grant = readOrSay(OAuth2Grant::read, body)) {
        fuzz::expect(!grant->accessToken.empty(), "a grant holds an access token");
        fuzz::expect(!grant->refreshToken || !grant->refreshToken->empty(), "a refresh token given is not empty");
    }
    RestReply reply;
    reply.status = 400;
    reply.body = std::string(body);
    reply.error = "HTTP 400 Bad Request";
    fuzz::expect(!BoxReplies::errorText(reply).empty(), "a failed request always has a message");
    return 0;
}
