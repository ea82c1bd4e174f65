#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace stowhaven {

// What the user hands back after agreeing on a service's page: the whole address the page
// sent them to ("db-key://1/connect?oauth_token=...", "http://localhost?code=..."), or only
// its query.
struct OAuthAnswer {
    // The address before its query, white space trimmed; empty when only a query was given.
    std::string address;
    // The query's parameters, decoded ("%XX" as its byte, "+" as a space).
    std::map<std::string, std::string> parameters;

    static OAuthAnswer parse(std::string_view answer);
    std::optional<std::string> parameter(const char* name) const;
};

}  // namespace stowhaven
