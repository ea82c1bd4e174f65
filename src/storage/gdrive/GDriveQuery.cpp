#include "storage/gdrive/GDriveQuery.h"

#include "storage/gdrive/GDriveReplies.h"

namespace stowhaven::GDriveQuery {

std::string quoted(std::string_view text) {
    std::string out = "'";
    for (const char c : text) {
        if (c == '\\' || c == '\'') out += '\\';
        out += c;
    }
    return out + "'";
}

std::string folderNamed(std::string_view name) {
    return "trashed=false and mimeType = " + quoted(GDriveFile::kFolderType) + " and name = " + quoted(name);
}

std::string foldersIn(std::string_view parentId) {
    return "trashed=false and mimeType = " + quoted(GDriveFile::kFolderType) + " and " + quoted(parentId) +
           " in parents";
}

std::string childrenOf(std::string_view parentId) { return "trashed=false and " + quoted(parentId) + " in parents"; }

std::string childNamed(std::string_view parentId, std::string_view name) {
    return childrenOf(parentId) + " and name = " + quoted(name);
}

}  // namespace stowhaven::GDriveQuery
