// SugarSync's reply readers on any bytes: an authorisation, the user record and a folder's
// contents, damaged or hostile; a date as the service writes them; and an error's text for
// the user.

#include "FuzzSupport.h"
#include "platform/FileNames.h"
#include "storage/sugarsync/SugarSyncReplies.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace stowhaven;
    using fuzz::expect;
    using fuzz::readOrSay;
    const std::string_view body = fuzz::bytesOf(data, size);
    readOrSay(SugarSyncReplies::authorization, body);
    if (const auto user = readOrSay(SugarSyncReplies::user, body)) {
        expect(user->limit >= 0 && user->usage >= 0, "no quota is negative");
        expect(!user->magicBriefcase.empty(), "a user record names its Magic Briefcase");
    }
    if (const auto contents = readOrSay(SugarSyncReplies::contents, body)) {
        for (const SugarSyncEntry& entry : contents->entries) {
            expect(isOneFileName(entry.name), "every name is one clean path component");
            expect(!entry.ref.empty(), "every entry has its reference");
            expect(entry.isFolder || !entry.fileData.empty(), "every file has its content's address");
        }
    }
    SugarSyncReplies::dateTime(body);
    const RestReply refused = fuzz::refusedReply(404, body, "HTTP 404 Not Found");
    expect(SugarSyncReplies::errorText("http://127.0.0.1/folder/x", refused).size() < 1024,
           "an error's text stays short");
    return 0;
}
