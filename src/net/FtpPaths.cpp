#include "net/FtpPaths.h"

#include <memory>

namespace stowhaven::FtpPaths {

namespace {

bool breaksCommandLine(const std::string& text) {
    return text.find_first_of(std::string("\r\n\0", 3)) != std::string::npos;
}

bool isHostCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' || c == '-' ||
           c == '_' || c == ':';
}

std::string escaped(CURL* handle, const std::string& name) {
    const std::unique_ptr<char, decltype(&curl_free)> text(
        curl_easy_escape(handle, name.data(), static_cast<int>(name.size())), &curl_free);
    return text ? text.get() : "";
}

}  // namespace

std::optional<std::string> problem(const std::string& path) {
    if (breaksCommandLine(path)) return "a path on the server can't hold a line break or a NUL";
    if (!path.starts_with('/')) return "a path on the server must start with \"/\"";
    return std::nullopt;
}

std::optional<std::string> accountProblem(const FtpAccount& account) {
    if (account.host.empty()) return "no FTP server given";
    for (const char c : account.host) {
        if (!isHostCharacter(c)) return "the FTP server's name holds a character no host name has";
    }
    if (account.port < 1 || account.port > 65535) return "the FTP server's port is not between 1 and 65535";
    if (breaksCommandLine(account.login) || breaksCommandLine(account.password))
        return "a login or a password can't hold a line break or a NUL";
    return std::nullopt;
}

std::string serverUrl(const FtpAccount& account) {
    // An IPv6 address goes between brackets.
    const bool bracketed = account.host.find(':') != std::string::npos;
    return "ftp://" + (bracketed ? "[" + account.host + "]" : account.host) + ":" + std::to_string(account.port) + "/";
}

std::string url(CURL* handle, const FtpAccount& account, const std::string& path, bool directory) {
    std::string url = serverUrl(account) + "%2F";
    bool first = true;
    std::string::size_type start = 1;
    while (start < path.size()) {
        auto end = path.find('/', start);
        if (end == std::string::npos) end = path.size();
        if (end > start) {
            if (!first) url += '/';
            first = false;
            url += escaped(handle, path.substr(start, end - start));
        }
        start = end + 1;
    }
    if (directory) url += '/';
    return url;
}

std::string child(const std::string& directory, const std::string& name) {
    return directory.ends_with('/') ? directory + name : directory + "/" + name;
}

}  // namespace stowhaven::FtpPaths
