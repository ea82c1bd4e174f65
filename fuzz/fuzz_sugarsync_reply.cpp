// SugarSync's reply readers on any bytes: an authorisation, the user record and a folder's
// contents, damaged or hostile; and an error's text for the user.

#include "FuzzSupport.h"
#include "platform/FileNames.h"
#include "storage/sugarsync/SugarSyncReplies.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

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
    readOrSay(SugarSyncReplies::authorization, body);
    if (const auto user = readOrSay(SugarSyncReplies::user, body)) {
        fuzz::expect(user->limit >= 0 && user->usage >= 0, "no quota is negative");
        fuzz::expect(!user->magicBriefcase.empty(), "a user record names its Magic Briefcase");
    }
    if (const auto contents = readOrSay(SugarSyncReplies::contents, body)) {
        for (const SugarSyncEntry& entry : contents->entries) {
            fuzz::expect(isOneFileName(entry.name), "every name is one clean path component");
            fuzz::expect(!entry.ref.empty(), "every entry has its reference");
            fuzz::expect(entry.isFolder || !entry.fileData.empty(), "every file has its content's address");
        }
    }
    SugarSyncReplies::dateTime(body);
    RestReply reply;
    reply.status = 404;
    reply.body = std::string(body);
    reply.error = "HTTP 404 Not Found";
    fuzz::expect(SugarSyncReplies::errorText("http://127.0.0.1/folder/x", reply).size() < 1024,
                 "an error's text stays short");
    return 0;
}
