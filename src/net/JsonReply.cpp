#include "net/JsonReply.h"

namespace stowhaven {

namespace {

// How deep the text's arrays and objects go, strings skipped; stops counting past LIMIT.
int nestingDepth(std::string_view text, int limit) {
    int depth = 0;
    int deepest = 0;
    bool inString = false;
    for (std::size_t at = 0; at < text.size() && deepest <= limit; ++at) {
        const char c = text[at];
        if (inString) {
            if (c == '\\') {
                ++at;
            } else if (c == '"') {
                inString = false;
            }
        } else if (c == '"') {
            inString = true;
        } else if (c == '[' || c == '{') {
            deepest = std::max(deepest, ++depth);
        } else if (c == ']' || c == '}') {
            --depth;
        }
    }
    return deepest;
}

void say(std::string* error, const char* text) {
    if (error != nullptr) *error = text;
}

}  // namespace

std::optional<nlohmann::json> JsonReply::parse(std::string_view body, std::string* error) {
    if (body.size() > kLongest) {
        say(error, "The reply is too large");
        return std::nullopt;
    }
    if (nestingDepth(body, kDeepest) > kDeepest) {
        say(error, "The reply is nested too deep");
        return std::nullopt;
    }
    nlohmann::json value = nlohmann::json::parse(body, nullptr, false);
    if (value.is_discarded()) {
        say(error, "The reply is no JSON");
        return std::nullopt;
    }
    return value;
}

std::optional<std::string> JsonReply::text(const nlohmann::json& object, const char* name) {
    if (!object.is_object()) return std::nullopt;
    const auto member = object.find(name);
    if (member == object.end() || !member->is_string()) return std::nullopt;
    return member->get<std::string>();
}

std::optional<std::int64_t> JsonReply::integer(const nlohmann::json& object, const char* name) {
    if (!object.is_object()) return std::nullopt;
    const auto member = object.find(name);
    if (member == object.end()) return std::nullopt;
    // Unsigned first: nlohmann counts those among the integers too.
    if (member->is_number_unsigned()) {
        const auto value = member->get<std::uint64_t>();
        if (value > static_cast<std::uint64_t>(INT64_MAX)) return std::nullopt;
        return static_cast<std::int64_t>(value);
    }
    if (member->is_number_integer()) return member->get<std::int64_t>();
    return std::nullopt;
}

std::optional<bool> JsonReply::boolean(const nlohmann::json& object, const char* name) {
    if (!object.is_object()) return std::nullopt;
    const auto member = object.find(name);
    if (member == object.end() || !member->is_boolean()) return std::nullopt;
    return member->get<bool>();
}

std::optional<nlohmann::json> JsonReply::object(std::string_view body, std::string& error) {
    auto value = parse(body, &error);
    if (value && !value->is_object()) {
        error = "The reply is no JSON object";
        return std::nullopt;
    }
    return value;
}

}  // namespace stowhaven
