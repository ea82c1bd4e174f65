// OneDrive replies as the service writes them: the top folder, a listing, a created folder,
// an upload's answer, the user, the quota, a token grant, the errors of the API (a throttling
// one among them) and of the token endpoint, and a hostile listing.

#include "seeds/Seeds.h"

namespace stowhaven::fuzz {

namespace {

constexpr std::string_view kTopFolder =
    R"({"id":"folder.5a1e9c0b7d3f2468","from":{"name":"Jo Doe","id":"5a1e9c0b7d3f2468"},"name":"SkyDrive",)"
    R"("description":"","parent_id":null,"size":52428800,"upload_location":)"
    R"("https://apis.live.net/v5.0/folder.5a1e9c0b7d3f2468/files/","comments_count":0,"comments_enabled":false,)"
    R"("is_embeddable":false,"count":2,"link":"https://onedrive.live.com/?cid=5a1e9c0b7d3f2468","type":"folder",)"
    R"("shared_with":{"access":"Just me"},"created_time":null,"updated_time":"2026-11-24T10:00:00+0000"})";

constexpr std::string_view kListing =
    R"({"data":[{"id":"folder.5a1e9c0b7d3f2468.5A1E9C0B7D3F2468!120","name":"2026-11-24_10~00~00",)"
    R"("description":"Stowhaven data","parent_id":"folder.5a1e9c0b7d3f2468.5A1E9C0B7D3F2468!110","count":3,)"
    R"("type":"folder"},{"id":"file.5a1e9c0b7d3f2468.5A1E9C0B7D3F2468!121","name":)"
    R"("2026-11-24_10~00~00.stowhvn.pdf","parent_id":"folder.5a1e9c0b7d3f2468.5A1E9C0B7D3F2468!110",)"
    R"("size":4096,"source":"https://public.bn1.livefilestore.com/y2p/x.pdf?download","type":"file"},)"
    R"({"id":"album.5a1e9c0b7d3f2468.5A1E9C0B7D3F2468!122","name":"Pictures","type":"album"}]})";

constexpr std::string_view kCreated =
    R"({"id":"folder.5a1e9c0b7d3f2468.5A1E9C0B7D3F2468!130","name":"NOTES","description":"Stowhaven data",)"
    R"("parent_id":"folder.5a1e9c0b7d3f2468.5A1E9C0B7D3F2468!120","type":"folder",)"
    R"("created_time":"2026-11-24T10:00:01+0000"})";

constexpr std::string_view kUploaded =
    R"({"id":"file.5a1e9c0b7d3f2468.5A1E9C0B7D3F2468!131","name":"NOTES-001.pdf","source":)"
    R"("https://public.bn1.livefilestore.com/y2p/NOTES-001.pdf?download"})";

constexpr std::string_view kUser =
    R"({"id":"5a1e9c0b7d3f2468","name":"Jo Doe","first_name":"Jo","last_name":"Doe","link":)"
    R"("https://profile.live.com/","gender":null,"locale":"en_US","updated_time":"2026-11-24T10:00:00+0000"})";

constexpr std::string_view kQuota = R"({"quota":26843545600,"available":26791116800})";

constexpr std::string_view kTokens =
    R"({"token_type":"bearer","expires_in":3600,"scope":"wl.signin wl.basic wl.skydrive wl.skydrive_update",)"
    R"("access_token":"EwBwAq1DBAAUGCCXc8wU","refresh_token":"MCt3Yyl2Xk7Q","user_id":"5a1e9c0b7d3f2468"})";

constexpr std::string_view kThrottled =
    R"({"error":{"code":"request_throttled","message":"The request has been throttled. Please retry after 30 seconds."}})";

constexpr std::string_view kApiError =
    R"({"error":{"code":"resource_already_exists","message":"The resource couldn't be created because a resource )"
    R"(named 'NOTES' already exists."}})";

constexpr std::string_view kTokenError =
    R"({"error":"invalid_grant","error_description":"The user could not be authenticated or the grant is expired."})";

constexpr std::string_view kHostile =
    R"json({"data":[{"id":"../../x","type":"folder","name":"Stowhaven"},{"id":"file.hostile.0","type":"file",)json"
    R"json("name":".."},{"id":"file.5a1e9c0b7d3f2468.5A1E9C0B7D3F2468!1","type":"file","name":"a/b"},)json"
    R"json({"id":"file.5a1e9c0b7d3f2468.5A1E9C0B7D3F2468!2","type":"file","name":"$(touch pwned)",)json"
    R"json("parent_id":"folder.x/../y"},{"id":"file.5a1e9c0b7d3f2468.5A1E9C0B7D3F2468!3","type":"FILE",)json"
    R"json("name":"tab\there"},{"id":7,"type":"file","name":"x"},[],null,7],"error":{"message":" after -5 seconds"}})json";

}  // namespace

void writeOneDriveSeeds(const std::filesystem::path& folder) {
    const SeedCorpus corpus(folder, "onedrive_reply");
    corpus.add("top-folder.json", kTopFolder);
    corpus.add("listing.json", kListing);
    corpus.add("created.json", kCreated);
    corpus.add("uploaded.json", kUploaded);
    corpus.add("user.json", kUser);
    corpus.add("quota.json", kQuota);
    corpus.add("tokens.json", kTokens);
    corpus.add("throttled.json", kThrottled);
    corpus.add("api-error.json", kApiError);
    corpus.add("token-error.json", kTokenError);
    corpus.add("hostile.json", kHostile);
}

}  // namespace stowhaven::fuzz
