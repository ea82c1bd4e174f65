// Google Drive replies as the service writes them: a created folder, a page of a files list
// with its next page's token, the account's record, token grants, the errors of the API and
// of the token endpoint, and a hostile page.

#include "seeds/Seeds.h"

namespace stowhaven::fuzz {

namespace {

constexpr std::string_view kFolder = R"({"id":"1AbCdEfGhIjKlMnOpQrStUvWxYz_-0123","name":"Stowhaven",)"
                                     R"("mimeType":"application/vnd.google-apps.folder"})";

constexpr std::string_view kFilePage =
    R"({"nextPageToken":"~!!~AI9FV7Q3bXl0ZW5leHQ","kind":"drive#fileList","files":[)"
    R"({"id":"1sTWaJ_j7PkjzaBWtNc3IzovK5hQf21FbOw9yLeeLPNQ","name":"2026-11-24_10~00~00",)"
    R"("mimeType":"application/vnd.google-apps.folder"},{"id":"0B7xKs9q2p-3RZk9","name":)"
    R"("2026-11-24_10~00~00.stowhvn","mimeType":"binary/octet-stream","size":"20480"},)"
    R"({"id":"1Zz","name":"Untitled document","mimeType":"application/vnd.google-apps.document"}]})";

constexpr std::string_view kAbout =
    R"({"user":{"kind":"drive#user","displayName":"Jo","me":true,"permissionId":"01234567890123456789",)"
    R"("emailAddress":"jo@example.com"},"storageQuota":{"limit":"16106127360","usage":"52428800",)"
    R"("usageInDrive":"52428800","usageInDriveTrash":"1024"}})";

constexpr std::string_view kUnlimited =
    R"({"user":{"emailAddress":"jo@example.com"},"storageQuota":{"usage":"0","usageInDrive":"0"}})";

constexpr std::string_view kTokens =
    R"({"access_token":"ya29.a0AfH6SMBx3kQ","expires_in":3599,"refresh_token":"1//0gLx9dS",)"
    R"("scope":"https://www.googleapis.com/auth/drive.file","token_type":"Bearer"})";

constexpr std::string_view kRefreshed =
    R"({"access_token":"ya29.a0AfH6SMCy4lR","expires_in":3599,)"
    R"("scope":"https://www.googleapis.com/auth/drive.file","token_type":"Bearer"})";

constexpr std::string_view kApiError =
    R"({"error":{"code":403,"message":"The user's Drive storage quota has been exceeded.","errors":[)"
    R"({"message":"The user's Drive storage quota has been exceeded.","domain":"usageLimits",)"
    R"("reason":"storageQuotaExceeded"}]}})";

constexpr std::string_view kTokenError =
    R"({"error":"invalid_grant","error_description":"Token has been expired or revoked."})";

constexpr std::string_view kHostile =
    R"json({"nextPageToken":"","files":[{"id":"../../x","name":"STOWHAVEN",)json"
    R"json("mimeType":"application/vnd.google-apps.folder"},{"id":"hostile1","name":".."},)json"
    R"json({"id":"hostile2","name":"a/b"},{"id":"hostile3","name":"$(touch pwned)","size":"-8"},)json"
    R"json({"id":"x y","name":"x"},{"id":"1","name":"tab\there"},{"id":7,"name":"n"},[],null,7],)json"
    R"json("storageQuota":{"limit":"99999999999999999999999","usageInDrive":-1},"user":{"emailAddress":7}})json";

}  // namespace

void writeGDriveSeeds(const std::filesystem::path& folder) {
    const SeedCorpus corpus(folder, "gdrive_reply");
    corpus.add("folder.json", kFolder);
    corpus.add("file-page.json", kFilePage);
    corpus.add("about.json", kAbout);
    corpus.add("about-unlimited.json", kUnlimited);
    corpus.add("tokens.json", kTokens);
    corpus.add("refreshed.json", kRefreshed);
    corpus.add("api-error.json", kApiError);
    corpus.add("token-error.json", kTokenError);
    corpus.add("hostile.json", kHostile);
}

}  // namespace stowhaven::fuzz
