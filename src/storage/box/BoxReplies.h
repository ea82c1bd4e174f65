#pragma once

#include "net/RestClient.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

// A folder or a file of the account. Its id is plain digits and its name one clean path
// component: an item of a reply that is otherwise is refused.
struct BoxItem {
    std::string id;
    std::string name;
    bool isFolder = false;
};

// One page of a folder's items.
struct BoxItemPage {
    std::vector<BoxItem> entries;
    std::int64_t totalCount = 0;
    // Items of the page that weren't taken (a bad name or id, or neither folder nor file).
    std::size_t refused = 0;
};

// The current user's record.
struct BoxUser {
    std::string login;
    std::int64_t spaceAmount = 0;
    std::int64_t spaceUsed = 0;
    std::int64_t maxUploadSize = 0;
};

// The readers of Box's JSON replies. Each answers none, with ERROR, for a body that isn't
// the reply it expects; none of them trusts a name or an id as it comes.
namespace BoxReplies {

// A folder's record (a fetched or a created folder).
std::optional<BoxItem> folder(std::string_view body, std::string& error);
std::optional<BoxItemPage> itemPage(std::string_view body, std::string& error);
// The file an upload made: {"total_count":1,"entries":[file]}.
std::optional<BoxItem> uploadedFile(std::string_view body, std::string& error);
std::optional<BoxUser> user(std::string_view body, std::string& error);

// What a failed request tells the user: the service's message where its body has one (an
// API error's "message", a token error's "error_description"), else the client's error.
std::string errorText(const RestReply& reply);

}  // namespace BoxReplies

}  // namespace stowhaven
