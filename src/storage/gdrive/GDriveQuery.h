#pragma once

#include <string>
#include <string_view>

namespace stowhaven {

// The search texts ("q") of the engine's files lists. Names and ids go in single quotes,
// with \ and ' escaped, so that no name can change what is searched.
namespace GDriveQuery {

// 'TEXT' with \ and ' escaped.
std::string quoted(std::string_view text);
// The product folder: "trashed=false and mimeType = '<folder type>' and name = 'NAME'".
std::string folderNamed(std::string_view name);
// The folders in a folder: "trashed=false and mimeType = '<folder type>' and 'ID' in parents".
std::string foldersIn(std::string_view parentId);
// Everything in a folder: "trashed=false and 'ID' in parents".
std::string childrenOf(std::string_view parentId);
// What is called NAME in a folder: the check before an upload.
std::string childNamed(std::string_view parentId, std::string_view name);

}  // namespace GDriveQuery

}  // namespace stowhaven
