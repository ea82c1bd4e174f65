#pragma once

#include "net/RestClient.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

// A file record of Drive: a folder or a file. Its id holds only [A-Za-z0-9_-] and its name is
// one clean path component: a record of a reply that is otherwise is refused.
struct GDriveFile {
    static constexpr const char* kFolderType = "application/vnd.google-apps.folder";

    std::string id;
    std::string name;
    std::string mimeType;
    // Bytes; none for folders and when the reply doesn't say.
    std::optional<std::int64_t> size;

    // The folder type, in any casing.
    bool isFolder() const;
};

// One page of a files list.
struct GDriveFilePage {
    std::vector<GDriveFile> files;
    std::optional<std::string> nextPageToken;
    // Records of the page that weren't taken (a bad name or id).
    std::size_t refused = 0;
};

// The account's record and its quota, in bytes.
struct GDriveAbout {
    std::string emailAddress;
    // None for an account without a limit.
    std::optional<double> limit;
    double usageInDrive = 0;
    double usageInDriveTrash = 0;
};

// The readers of Drive's JSON replies. Each answers none, with ERROR, for a body that isn't
// the reply it expects; none of them trusts a name or an id as it comes.
namespace GDriveReplies {

std::optional<GDriveFile> file(std::string_view body, std::string& error);
std::optional<GDriveFilePage> filePage(std::string_view body, std::string& error);
std::optional<GDriveAbout> about(std::string_view body, std::string& error);

// What a failed request tells the user: Drive's error message where the body has one, a
// token endpoint's words, else the client's error.
std::string errorText(const RestReply& reply);

}  // namespace GDriveReplies

}  // namespace stowhaven
