#pragma once

#include "net/FtpClient.h"

#include <curl/curl.h>

#include <optional>
#include <string>

namespace stowhaven {

// Paths and addresses as they go to an FTP server. A path is absolute on the server; each
// of its names is escaped into the URL and the leading "/" goes as "%2F", so that it means
// the same folder whatever the login folder is.
namespace FtpPaths {

// Why PATH can't go to a server, or nothing: it must start with "/" and hold no CR, LF or
// NUL, which would end a command and start another.
std::optional<std::string> problem(const std::string& path);
// Why the account's host, port, login or password can't be used, or nothing.
std::optional<std::string> accountProblem(const FtpAccount& account);

// "ftp://host:port/" for a checked account.
std::string serverUrl(const FtpAccount& account);
// The URL of the file PATH, or of the folder PATH (with its final "/") when DIRECTORY.
std::string url(CURL* handle, const FtpAccount& account, const std::string& path, bool directory);
// DIRECTORY's entry NAME.
std::string child(const std::string& directory, const std::string& name);

}  // namespace FtpPaths

}  // namespace stowhaven
