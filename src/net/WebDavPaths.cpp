#include "net/WebDavPaths.h"

#include <memory>

namespace stowhaven::WebDavPaths {

namespace {

std::string escaped(CURL* handle, const std::string& name) {
    const std::unique_ptr<char, decltype(&curl_free)> text(
        curl_easy_escape(handle, name.data(), static_cast<int>(name.size())), &curl_free);
    return text ? text.get() : "";
}

bool hasControlCharacter(const std::string& text) {
    for (const char c : text) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) return true;
    }
    return false;
}

}  // namespace

std::optional<std::string> problem(const std::string& path) {
    if (!path.starts_with('/')) return "a path on the server must start with \"/\"";
    if (path.find('\0') != std::string::npos) return "a path on the server can't hold a NUL";
    for (const auto& name : names(path)) {
        if (name == "." || name == "..") return "a path on the server can't hold \".\" or \"..\"";
    }
    return std::nullopt;
}

std::optional<std::string> accountProblem(const WebDavAccount& account) {
    if (!account.baseUrl.starts_with("http://") && !account.baseUrl.starts_with("https://"))
        return "the server's address must start with http:// or https://";
    if (hasControlCharacter(account.baseUrl)) return "the server's address can't hold a control character";
    if (account.login.find(':') != std::string::npos || hasControlCharacter(account.login))
        return "a login can't hold a colon or a control character";
    if (account.password.find('\0') != std::string::npos) return "a password can't hold a NUL";
    return std::nullopt;
}

std::string url(CURL* handle, const WebDavAccount& account, const std::string& path, bool directory) {
    std::string url = account.baseUrl;
    while (url.ends_with('/')) url.pop_back();
    for (const auto& name : names(path)) url += "/" + escaped(handle, name);
    if (directory || path.ends_with('/')) url += '/';
    return url;
}

std::vector<std::string> names(const std::string& path) {
    std::vector<std::string> result;
    std::string::size_type start = 0;
    while (start < path.size()) {
        auto end = path.find('/', start);
        if (end == std::string::npos) end = path.size();
        if (end > start) result.push_back(path.substr(start, end - start));
        start = end + 1;
    }
    return result;
}

}  // namespace stowhaven::WebDavPaths
