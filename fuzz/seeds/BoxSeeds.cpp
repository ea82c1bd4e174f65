// Box replies as the service writes them: a folder, a page of items, an upload's answer,
// the user, a token grant, the errors of the API and of the token endpoint, and a hostile
// page.

#include "seeds/Seeds.h"

namespace stowhaven::fuzz {

namespace {

constexpr std::string_view kFolder =
    R"({"type":"folder","id":"123456","sequence_id":"0","etag":"0","name":"Stowhaven","created_at":)"
    R"("2026-11-24T10:00:00-08:00","path_collection":{"total_count":1,"entries":[{"type":"folder","id":"0",)"
    R"("name":"All Files"}]},"item_collection":{"total_count":0,"entries":[],"offset":0,"limit":100}})";

constexpr std::string_view kItemPage =
    R"({"total_count":3,"entries":[{"type":"folder","id":"200","sequence_id":"1","etag":"1",)"
    R"("name":"2026-11-24_10~00~00"},{"type":"file","id":"201","sequence_id":"0","etag":"0",)"
    R"("name":"2026-11-24_10~00~00.stowhvn","sha1":"85136c79cbf9fe36bb9d05d0639c70c265c18d37"},)"
    R"({"type":"web_link","id":"202","name":"a link"}],"offset":0,"limit":1000,)"
    R"("order":[{"by":"type","direction":"ASC"},{"by":"name","direction":"ASC"}]})";

constexpr std::string_view kUploaded =
    R"({"total_count":1,"entries":[{"type":"file","id":"3000","name":"NOTES-001","size":20,)"
    R"("parent":{"type":"folder","id":"200"}}]})";

constexpr std::string_view kUser =
    R"({"type":"user","id":"11446498","name":"Jo","login":"jo@example.com","space_amount":10737418240,)"
    R"("space_used":52428800,"max_upload_size":2147483648,"status":"active"})";

constexpr std::string_view kTokens =
    R"({"access_token":"T9cE5asGnuyYCCqIZFoWjFHvNbvVqHjl","expires_in":3600,"restricted_to":[],)"
    R"("refresh_token":"J7rxTiWOHMoSC1isKZKBZWizoRXjkQzig5C6jFgCVJ9bUnsUfGMinKBDLZWP9BgR","token_type":"bearer"})";

constexpr std::string_view kApiError =
    R"({"type":"error","status":409,"code":"item_name_in_use","context_info":{"conflicts":[)"
    R"({"type":"file","id":"201","name":"2026-11-24_10~00~00.stowhvn"}]},"help_url":)"
    R"("https://developer.box.com/guides/api-calls/permissions-and-errors/common-errors/",)"
    R"("message":"Item with the same name already exists","request_id":"abcdef123456"})";

constexpr std::string_view kTokenError = R"({"error":"invalid_grant","error_description":"Invalid refresh token"})";

constexpr std::string_view kHostile =
    R"json({"total_count":9223372036854775807,"entries":[{"type":"folder","id":"../../x","name":"STOWHAVEN"},)json"
    R"json({"type":"file","id":"9000000001","name":".."},{"type":"file","id":"9000000002","name":"a/b"},)json"
    R"json({"type":"file","id":"9000000003","name":"$(touch pwned)"},{"type":"file","id":-1,"name":"x"},)json"
    R"json({"type":"file","id":"1","name":"tab\there"},[],null,7]})json";

}  // namespace

void writeBoxSeeds(const std::filesystem::path& folder) {
    const SeedCorpus corpus(folder, "box_reply");
    corpus.add("folder.json", kFolder);
    corpus.add("item-page.json", kItemPage);
    corpus.add("uploaded.json", kUploaded);
    corpus.add("user.json", kUser);
    corpus.add("tokens.json", kTokens);
    corpus.add("api-error.json", kApiError);
    corpus.add("token-error.json", kTokenError);
    corpus.add("hostile.json", kHostile);
}

}  // namespace stowhaven::fuzz
