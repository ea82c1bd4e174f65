#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

// The service's JSON replies read as data. Each reader answers none, with the reason in
// ERROR, for a reply that isn't what it should be: not JSON, too large or too deep, or
// lacking what the program needs.
namespace dropbox {

struct Account {
    std::string displayName;
    std::int64_t totalBytes = 0;
    std::int64_t consumedBytes = 0;
};
// GET /1/account/info: the quota's total less normal and shared use.
std::optional<Account> readAccount(std::string_view body, std::string& error);

struct Entry {
    // One clean path component.
    std::string name;
    bool isDirectory = false;
    std::int64_t bytes = 0;
};
// GET /1/metadata of the folder FOLDER: its "contents". Names are data: an entry whose "path"
// is not a child of FOLDER (compared without regard to case, as the service compares paths)
// or whose name is not one clean path component makes the whole listing refused, since a
// service never answers so.
std::optional<std::vector<Entry>> readListing(std::string_view body, std::string_view folder, std::string& error);

// The metadata of one file or folder (create_folder, a commit): its "path" and "bytes".
struct Metadata {
    std::string path;
    std::int64_t bytes = 0;
};
std::optional<Metadata> readMetadata(std::string_view body, std::string& error);

// A chunk taken (POST /1/chunked_upload), or refused for its offset (400): the upload's id
// and the offset the service expects next.
struct ChunkState {
    std::string uploadId;
    std::int64_t offset = 0;
};
std::optional<ChunkState> readChunkState(std::string_view body, std::string& error);

// A deletion's metadata says "is_deleted".
bool readIsDeleted(std::string_view body);

// The service's own account of a refusal, {"error": "text"}; none without one.
std::optional<std::string> readError(std::string_view body);

}  // namespace dropbox

}  // namespace stowhaven
