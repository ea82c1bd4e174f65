#include "net/ServiceBase.h"

#include "platform/AsciiCase.h"
#include "platform/Environment.h"

#include <curl/curl.h>

#include <memory>

namespace stowhaven {

namespace {

struct UrlDeleter {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
};

std::optional<std::string> part(CURLU* url, CURLUPart which) {
    char* value = nullptr;
    if (curl_url_get(url, which, &value, 0) != CURLUE_OK || value == nullptr) return std::nullopt;
    std::string text(value);
    curl_free(value);
    return text;
}

bool isLoopback(const std::string& host) {
    return host == "127.0.0.1" || host == "[::1]" || equalsIgnoringAsciiCase(host, "localhost");
}

using Url = std::unique_ptr<CURLU, UrlDeleter>;

Url parsed(const std::string& address) {
    Url url(curl_url());
    if (url && curl_url_set(url.get(), CURLUPART_URL, address.c_str(), 0) == CURLUE_OK) return url;
    return nullptr;
}

// Why URL can't be spoken to with an account's tokens; none when it can.
std::optional<std::string> insecurity(CURLU* url) {
    const auto scheme = part(url, CURLUPART_SCHEME);
    const auto host = part(url, CURLUPART_HOST);
    if (!scheme || !host || (*scheme != "https" && *scheme != "http")) return "must be an http or https address";
    if (*scheme == "http" && !isLoopback(*host)) {
        return "may use plain http only for this machine (127.0.0.1, ::1, localhost)";
    }
    if (part(url, CURLUPART_USER)) return "must not hold credentials";
    return std::nullopt;
}

// "scheme://host[:port]" of VALUE, or why it can't stand for a service host.
std::optional<std::string> baseOf(const std::string& value, std::string& error) {
    const Url url = parsed(value);
    if (!url) {
        error = "is no address";
        return std::nullopt;
    }
    const auto scheme = part(url.get(), CURLUPART_SCHEME);
    const auto host = part(url.get(), CURLUPART_HOST);
    const auto port = part(url.get(), CURLUPART_PORT);
    const auto path = part(url.get(), CURLUPART_PATH);
    if (const auto problem = insecurity(url.get())) {
        error = *problem;
    } else if (part(url.get(), CURLUPART_QUERY) || part(url.get(), CURLUPART_FRAGMENT) || (path && *path != "/")) {
        error = "must give a scheme, a host and a port only";
    } else {
        return *scheme + "://" + *host + (port ? ":" + *port : "");
    }
    return std::nullopt;
}

}  // namespace

ServiceBase ServiceBase::resolve(const char* variable, std::string_view published) {
    ServiceBase base{std::string(published), std::nullopt};
    const auto value = environmentVariable(variable);
    if (!value || value->empty()) return base;
    std::string error;
    if (const auto url = baseOf(*value, error)) {
        base.url = *url;
    } else {
        base.url.clear();
        base.error = std::string(variable) + " " + error;
    }
    return base;
}

bool ServiceBase::isSecureOrLoopback(const std::string& address) {
    const Url url = parsed(address);
    return url && !insecurity(url.get());
}

std::optional<std::string> appCredential(const char* variable) {
    auto value = environmentVariable(variable);
    if (!value || value->empty()) return std::nullopt;
    return value;
}

}  // namespace stowhaven
