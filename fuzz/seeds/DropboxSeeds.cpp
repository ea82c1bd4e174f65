// Replies of the Dropbox version 1 interface as the service writes them: a folder's listing,
// the account, a chunk taken or refused for its offset, a deletion, an error, and a hostile
// listing.

#include "seeds/Seeds.h"

namespace stowhaven::fuzz {

namespace {

constexpr std::string_view kListing =
    R"json({"size": "0 bytes", "hash": "37eb1ba1849d4b0fb0b28caf7ef3af52", "bytes": 0, "thumb_exists": false,)json"
    R"json( "rev": "714f029684fe", "modified": "Wed, 25 Nov 2026 02:00:00 +0000", "path": "/Stowhaven/iPad",)json"
    R"json( "is_dir": true, "icon": "folder", "root": "dropbox", "contents": [{"size": "2.3 KB", "rev": "35e97029684fe",)json"
    R"json( "thumb_exists": false, "bytes": 2362, "modified": "Wed, 25 Nov 2026 02:00:00 +0000",)json"
    R"json( "client_mtime": "Wed, 25 Nov 2026 02:00:00 +0000", "path": "/Stowhaven/iPad/2026-11-25_02~00~00.stowhvn",)json"
    R"json( "is_dir": false, "icon": "page_white", "root": "dropbox", "mime_type": "application/octet-stream",)json"
    R"json( "revision": 220823}, {"size": "0 bytes", "rev": "35e98029684fe", "bytes": 0, "path":)json"
    R"json( "/stowhaven/ipad/2026-11-25_02~00~00", "is_dir": true, "icon": "folder", "root": "dropbox"}]})json";

constexpr std::string_view kAccount =
    R"json({"referral_link": "https://db.tt/example", "display_name": "Jo Example", "uid": 12345678,)json"
    R"json( "country": "GB", "quota_info": {"shared": 253738410565, "quota": 107374182400000,)json"
    R"json( "normal": 680031877871}, "email": "jo@example.com"})json";

constexpr std::string_view kChunk =
    R"json({"upload_id": "v0k84B0AT9fYkfMUp0sBTA", "offset": 10485760, "expires": "Thu, 26 Nov 2026 02:00:00 +0000"})json";

constexpr std::string_view kDeleted =
    R"json({"size": "0 bytes", "is_deleted": true, "bytes": 0, "path": "/Stowhaven/iPad/2026-11-25_02~00~00",)json"
    R"json( "is_dir": true, "root": "dropbox", "revision": 28})json";

constexpr std::string_view kError = R"json({"error": "Path '/Stowhaven/iPad' not found"})json";

constexpr std::string_view kHostile =
    R"json({"path": "/Stowhaven/iPad", "is_dir": true, "contents": [{"path": "/Stowhaven/iPad/..", "is_dir": true},)json"
    R"json( {"path": "/Stowhaven/iPad/a/b", "is_dir": false, "bytes": -1}, {"path": "/elsewhere/x.stowhvn",)json"
    R"json( "is_dir": false}, {"path": "/Stowhaven/iPad/$(touch pwned)", "is_dir": "yes"}, {"path": null}]})json";

}  // namespace

void writeDropboxSeeds(const std::filesystem::path& folder) {
    const SeedCorpus corpus(folder, "dropbox_reply");
    corpus.add("listing.json", kListing);
    corpus.add("account.json", kAccount);
    corpus.add("chunk.json", kChunk);
    corpus.add("deleted.json", kDeleted);
    corpus.add("error.json", kError);
    corpus.add("hostile.json", kHostile);
}

}  // namespace stowhaven::fuzz
