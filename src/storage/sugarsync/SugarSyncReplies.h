#pragma once

#include "net/RestClient.h"
#include "platform/Date.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

// The authorisation reply's body; the token itself comes in the Location header.
struct SugarSyncAuthorization {
    std::string userLink;
    // None when the reply's "expiration" is no date.
    std::optional<Date> expiration;
};

// The user record: the quota as the service gives it, and the Magic Briefcase's reference.
struct SugarSyncUser {
    double limit = 0;
    double usage = 0;
    std::string magicBriefcase;
};

// A folder, or a file whose content is on the server, of a folder's contents. The name is
// the decoded displayName, one clean path component; displayName stays as the service keeps
// it, percent-encoded.
struct SugarSyncEntry {
    bool isFolder = false;
    std::string displayName;
    std::string name;
    std::string ref;
    // A file's content; empty for a folder.
    std::string fileData;
};

struct SugarSyncContents {
    std::vector<SugarSyncEntry> entries;
    // Entries that weren't taken: a name that decodes to no clean name, or no reference.
    std::vector<std::string> refused;
};

// The readers of SugarSync's XML replies. Each answers none, with ERROR, for a body that
// isn't the reply it expects; none of them trusts a name as it comes.
namespace SugarSyncReplies {

std::optional<SugarSyncAuthorization> authorization(std::string_view body, std::string& error);
std::optional<SugarSyncUser> user(std::string_view body, std::string& error);
// A folder's "collectionContents": its folders ("collection" of type "folder"), then its
// files that are present on the server; every other entry is left out.
std::optional<SugarSyncContents> contents(std::string_view body, std::string& error);

// A dateTime as the service writes it, "2016-01-02T03:04:05.678-08:00" (or "Z", or an
// offset without its colon); none for any other text.
std::optional<Date> dateTime(std::string_view text);
// A displayName decoded; none for a broken escape or a name that isn't one clean path
// component.
std::optional<std::string> decodedName(std::string_view displayName);

// What a failed request tells the user: for a refusal the address, the status and the
// body's text, for a server's error the status and the body's text, else the connection's
// error. Never longer than a few lines.
std::string errorText(const std::string& url, const RestReply& reply);

}  // namespace SugarSyncReplies

}  // namespace stowhaven
