// The Dropbox reply readers on any bytes: the service's JSON, damaged or hostile.

#include "FuzzSupport.h"
#include "storage/dropbox/DropboxReplies.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace stowhaven;
    using fuzz::readOrSay;
    const std::string_view body = fuzz::bytesOf(data, size);
    const auto readListing = [](std::string_view bytes, std::string& problem) {
        return dropbox::readListing(bytes, "/Stowhaven/iPad", problem);
    };
    if (const auto listing = readOrSay(readListing, body)) {
        for (const auto& entry : *listing) {
            fuzz::expect(isOneFileName(entry.name), "every name is one clean path component");
            fuzz::expect(entry.bytes >= 0, "no size is negative");
        }
    }
    if (const auto account = readOrSay(dropbox::readAccount, body)) {
        fuzz::expect(account->totalBytes >= 0 && account->consumedBytes >= 0, "no quota is negative");
    }
    std::string problem;
    if (const auto state = dropbox::readChunkState(body, problem)) {
        fuzz::expect(!state->uploadId.empty() && state->offset >= 0, "a chunk's state has an id and an offset");
    }
    if (const auto metadata = dropbox::readMetadata(body, problem)) {
        fuzz::expect(metadata->bytes >= 0, "no size is negative");
    }
    dropbox::readIsDeleted(body);
    dropbox::readError(body);
    return 0;
}
