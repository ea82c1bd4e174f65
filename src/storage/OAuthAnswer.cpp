#include "storage/OAuthAnswer.h"

#include "core/Text.h"

namespace stowhaven {

namespace {

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::string percentDecoded(std::string_view text) {
    std::string decoded;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '%' && at + 2 < text.size() && hexValue(text[at + 1]) >= 0 && hexValue(text[at + 2]) >= 0) {
            decoded.push_back(static_cast<char>(hexValue(text[at + 1]) * 16 + hexValue(text[at + 2])));
            at += 2;
        } else {
            decoded.push_back(text[at] == '+' ? ' ' : text[at]);
        }
    }
    return decoded;
}

}  // namespace

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
        parsed.parameters.emplace(percentDecoded(pair.substr(0, equals)), percentDecoded(pair.substr(equals + 1)));
    }
    return parsed;
}

std::optional<std::string> OAuthAnswer::parameter(const char* name) const {
    const auto found = parameters.find(name);
    if (found == parameters.end()) return std::nullopt;
    return found->second;
}

}  // namespace stowhaven
