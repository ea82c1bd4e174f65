#include "storage/dropbox/DropboxReplies.h"

#include "net/JsonReply.h"
#include "platform/AsciiCase.h"
#include "platform/FileNames.h"

namespace stowhaven::dropbox {

namespace {

using nlohmann::json;

// A size or a quota: a whole number, not below 0.
std::optional<std::int64_t> count(const json& value, const char* name) {
    const auto number = JsonReply::integer(value, name);
    if (number && *number >= 0) return number;
    return std::nullopt;
}

// The name of PATH when it is a child of FOLDER, and one clean path component.
std::optional<std::string> childName(std::string_view path, std::string_view folder) {
    while (!folder.empty() && folder.back() == '/') folder.remove_suffix(1);
    if (path.size() <= folder.size() + 1 || !beginsIgnoringAsciiCase(path, folder) || path[folder.size()] != '/')
        return std::nullopt;
    std::string name(path.substr(folder.size() + 1));
    if (!isOneFileName(name)) return std::nullopt;
    return name;
}

}  // namespace

std::optional<Account> readAccount(std::string_view body, std::string& error) {
    const auto reply = JsonReply::object(body, error);
    if (!reply) return std::nullopt;
    const auto name = JsonReply::text(*reply, "display_name");
    const auto quota = reply->find("quota_info");
    if (!name || quota == reply->end()) {
        error = "The account reply lacks its name or its quota";
        return std::nullopt;
    }
    const auto total = count(*quota, "quota");
    const auto normal = count(*quota, "normal");
    const auto shared = count(*quota, "shared");
    if (!total || !normal || !shared || *normal > INT64_MAX - *shared) {
        error = "The account reply's quota is no count of bytes";
        return std::nullopt;
    }
    return Account{*name, *total, *normal + *shared};
}

std::optional<std::vector<Entry>> readListing(std::string_view body, std::string_view folder, std::string& error) {
    const auto reply = JsonReply::object(body, error);
    if (!reply) return std::nullopt;
    const auto contents = reply->find("contents");
    if (contents == reply->end() || !contents->is_array()) {
        error = "The listing has no contents";
        return std::nullopt;
    }
    std::vector<Entry> entries;
    for (const json& item : *contents) {
        const auto path = JsonReply::text(item, "path");
        const auto isDirectory = JsonReply::boolean(item, "is_dir");
        const auto name = path ? childName(*path, folder) : std::nullopt;
        if (!name || !isDirectory) {
            error = "The listing of <" + std::string(folder) + "> holds an entry that is not in it: <" +
                    path.value_or("(null)") + ">";
            return std::nullopt;
        }
        entries.push_back(Entry{*name, *isDirectory, count(item, "bytes").value_or(0)});
    }
    return entries;
}

std::optional<Metadata> readMetadata(std::string_view body, std::string& error) {
    const auto reply = JsonReply::object(body, error);
    if (!reply) return std::nullopt;
    const auto path = JsonReply::text(*reply, "path");
    if (!path) {
        error = "The reply names no path";
        return std::nullopt;
    }
    return Metadata{*path, count(*reply, "bytes").value_or(0)};
}

std::optional<ChunkState> readChunkState(std::string_view body, std::string& error) {
    const auto reply = JsonReply::object(body, error);
    if (!reply) return std::nullopt;
    const auto uploadId = JsonReply::text(*reply, "upload_id");
    const auto offset = count(*reply, "offset");
    if (!uploadId || uploadId->empty() || !offset) {
        error = "The chunk's reply lacks its upload id or offset";
        return std::nullopt;
    }
    return ChunkState{*uploadId, *offset};
}

bool readIsDeleted(std::string_view body) {
    std::string ignored;
    const auto reply = JsonReply::object(body, ignored);
    return reply && JsonReply::boolean(*reply, "is_deleted").value_or(false);
}

std::optional<std::string> readError(std::string_view body) {
    std::string ignored;
    const auto reply = JsonReply::object(body, ignored);
    if (!reply) return std::nullopt;
    return JsonReply::text(*reply, "error");
}

}  // namespace stowhaven::dropbox
