#include "storage/OAuthAnswer.h"

#include "core/Text.h"

namespace stowhaven {

OAuthAnswer OAuthAnswer::parse(std::string_view answer) {
    const std::string text = textutil::trimmed(answer);
    std::string_view query = text;
    query = query.substr(0, query.find('#'));
    OAuthAnswer parsed;
    if (const auto mark = query.find('?'); mark != std::string_view::npos) {
        parsed.address = std::string(query.substr(0, mark));
        query.remove_prefix(mark + 1);
    } else if (query.find("://") != std::string_view::npos) {
        parsed.address = std::string(query);
        query = {};
    }
    for (const std::string& pair : textutil::split(query, '&')) {
        const auto equals = pair.find('=');
        if (equals == std::string::npos) continue;
        auto name = textutil::percentDecoded(std::string_view(pair).substr(0, equals), true);
        auto value = textutil::percentDecoded(std::string_view(pair).substr(equals + 1), true);
        // A parameter whose escapes are broken was not written by the service.
        if (name && value) parsed.parameters.emplace(std::move(*name), std::move(*value));
    }
    return parsed;
}

std::optional<std::string> OAuthAnswer::parameter(const char* name) const {
    const auto found = parameters.find(name);
    if (found == parameters.end()) return std::nullopt;
    return found->second;
}

}  // namespace stowhaven
