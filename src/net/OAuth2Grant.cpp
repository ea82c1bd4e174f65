#include "net/OAuth2Grant.h"

#include "net/JsonReply.h"

namespace stowhaven {

std::optional<OAuth2Grant> OAuth2Grant::read(std::string_view body, std::string& error) {
    const auto reply = JsonReply::parse(body, &error);
    if (!reply) return std::nullopt;
    const auto access = JsonReply::text(*reply, "access_token");
    if (!access || access->empty()) {
        error = "The reply holds no access token";
        return std::nullopt;
    }
    OAuth2Grant grant{*access, JsonReply::text(*reply, "refresh_token"), JsonReply::integer(*reply, "expires_in")};
    if (grant.refreshToken && grant.refreshToken->empty()) grant.refreshToken.reset();
    return grant;
}

std::string OAuth2Grant::errorText(const RestReply& reply) {
    std::string ignored;
    if (const auto body = JsonReply::parse(reply.body, &ignored)) {
        for (const char* key : {"error_description", "error"}) {
            if (const auto text = JsonReply::text(*body, key); text && !text->empty()) return *text;
        }
    }
    return reply.error.empty() ? "HTTP " + std::to_string(reply.status) : reply.error;
}

}  // namespace stowhaven
