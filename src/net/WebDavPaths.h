#pragma once

#include "net/WebDavClient.h"

#include <curl/curl.h>

#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// Paths and addresses as they go to a WebDAV server. A path is absolute on the server;
// each of its names is percent-escaped into the URL, the "/" between them kept.
namespace WebDavPaths {

// Why PATH can't go to a server, or nothing: it must start with "/", hold no NUL, and no
// "." or ".." name, which would point elsewhere than it reads.
std::optional<std::string> problem(const std::string& path);
// Why the account can't be used, or nothing: an http or https address, and a login
// without a colon (Basic authentication can't carry one) or a control character.
std::optional<std::string> accountProblem(const WebDavAccount& account);

// The URL of PATH on the account's server; a final "/" of PATH is kept, and added when
// DIRECTORY.
std::string url(CURL* handle, const WebDavAccount& account, const std::string& path, bool directory = false);
// The names of PATH in order, without empty ones: "/a/b/" gives "a", "b".
std::vector<std::string> names(const std::string& path);

}  // namespace WebDavPaths

}  // namespace stowhaven
