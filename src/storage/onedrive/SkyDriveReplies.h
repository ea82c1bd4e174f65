#pragma once

#include "net/RestClient.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

// A folder or a file of the account, as a reply gives it. Its id has the service's shape and
// its name is one clean path component: an entry that is otherwise is refused.
struct SkyDriveEntry {
    std::string id;
    std::string name;
    bool isFolder = false;
    // The folder it lies in, when the reply tells.
    std::optional<std::string> parentId;
};

// A folder's children, and how many of them weren't taken (a bad name or id, or neither
// folder nor file: albums and the like).
struct SkyDriveListing {
    std::vector<SkyDriveEntry> entries;
    std::size_t refused = 0;
};

// The readers of OneDrive's JSON replies. Keys whose value is null are taken out at every
// depth first, so that a null and a missing key read the same. Each answers none, with
// ERROR, for a body that isn't the reply it expects.
namespace SkyDriveReplies {

// "folder.<hex>" for the top folder, "folder.<hex>.<HEX>!<digits>" or "file.<...>" below it.
bool isItemId(std::string_view id);

// The reply as an object, its null keys removed.
std::optional<nlohmann::json> object(std::string_view body, std::string& error);
// A created, renamed or uploaded item, or the top folder.
std::optional<SkyDriveEntry> entry(std::string_view body, std::string& error);
// An upload's reply, {"id", "name", "source"}: a file.
std::optional<SkyDriveEntry> uploadedFile(std::string_view body, std::string& error);
// {"data": [...]}; no "data" is an empty folder.
std::optional<SkyDriveListing> listing(std::string_view body, std::string& error);
// The user record's "name".
std::optional<std::string> userName(std::string_view body, std::string& error);
// The quota's "available", in bytes.
std::optional<double> available(std::string_view body, std::string& error);

// The seconds a throttling reply (420) asks to wait: its message ends "... retry after N
// seconds."; none when the body doesn't say.
std::optional<int> throttleSeconds(std::string_view body);
// What a failed request tells the user: the service's message (an API error's
// "error.message", a token error's "error_description"), else the client's error.
std::string errorText(const RestReply& reply);

}  // namespace SkyDriveReplies

}  // namespace stowhaven
