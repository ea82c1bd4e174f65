// The Dropbox reply readers on any bytes: the service's JSON, damaged or hostile.

#include "FuzzSupport.h"
#include "platform/FileNames.h"
#include "storage/dropbox/DropboxReplies.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace stowhaven;
    const std::string_view body = fuzz::bytesOf(data, size);
    std::string problem;
    const auto listing = dropbox::readListing(body, "/Stowhaven/iPad", problem);
    fuzz::expect(listing.has_value() || !problem.empty(), "a refused listing says why");
    for (const auto& entry : listing.value_or(std::vector<dropbox::Entry>{})) {
        fuzz::expect(isOneFileName(entry.name), "every name is one clean path component");
        fuzz::expect(entry.bytes >= 0, "no size is negative");
    }
    problem.clear();
    if (const auto account = dropbox::readAccount(body, problem)) {
        fuzz::expect(account->totalBytes >= 0 && account->consumedBytes >= 0, "no quota is negative");
    } else {
        fuzz::expect(!problem.empty(), "a refused account says why");
    }
    problem.clear();
    if (const auto state = dropbox::readChunkState(body, problem)) {
        fuzz::expect(!state->uploadId.empty() && state->offset >= 0, "a chunk's state has an id and an offset");
    }
    problem.clear();
    if (const auto metadata = dropbox::readMetadata(body, problem)) {
        fuzz::expect(metadata->bytes >= 0, "no size is negative");
    }
    dropbox::readIsDeleted(body);
    dropbox::readError(body);
    return 0;
}
