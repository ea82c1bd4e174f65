#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace stowhaven {

// A service's JSON reply read as data: none, with the reason in ERROR, for a body that is
// not JSON, is nested deeper than kDeepest, or is longer than kLongest bytes.
struct JsonReply {
    static constexpr int kDeepest = 32;
    static constexpr std::size_t kLongest = 4 * 1024 * 1024;

    static std::optional<nlohmann::json> parse(std::string_view body, std::string* error = nullptr);
    // A reply that must be a JSON object: none, with ERROR, for any other.
    static std::optional<nlohmann::json> object(std::string_view body, std::string& error);
    // The member of an object as text, a whole number or a boolean; none when it is missing or
    // of another type.
    static std::optional<std::string> text(const nlohmann::json& object, const char* name);
    static std::optional<std::int64_t> integer(const nlohmann::json& object, const char* name);
    static std::optional<bool> boolean(const nlohmann::json& object, const char* name);
};

}  // namespace stowhaven
