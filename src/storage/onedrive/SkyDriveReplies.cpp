#include "storage/onedrive/SkyDriveReplies.h"

#include "net/JsonReply.h"
#include "platform/FileNames.h"
#include "platform/Log.h"

#include <charconv>
#include <regex>

namespace stowhaven {

namespace {

constexpr std::size_t kLongestId = 128;

void removeNullKeys(nlohmann::json& value) {
    if (value.is_object()) {
        for (auto member = value.begin(); member != value.end();) {
            if (member->is_null()) {
                member = value.erase(member);
            } else {
                removeNullKeys(*member);
                ++member;
            }
        }
    } else if (value.is_array()) {
        for (nlohmann::json& element : value) removeNullKeys(element);
    }
}

// A folder or a file; none for other kinds of item and for a name or an id that a reply
// must not give.
std::optional<SkyDriveEntry> entryOf(const nlohmann::json& item) {
    if (!item.is_object()) return std::nullopt;
    const auto type = JsonReply::text(item, "type");
    const auto id = JsonReply::text(item, "id");
    const auto name = JsonReply::text(item, "name");
    if (!type || (*type != "folder" && *type != "file") || !id || !name) return std::nullopt;
    auto parent = JsonReply::text(item, "parent_id");
    if (!SkyDriveReplies::isItemId(*id) || !isOneFileName(*name) || (parent && !SkyDriveReplies::isItemId(*parent))) {
        SH_LOG("Refused the listed item <{}> of id <{}>", *name, *id);
        return std::nullopt;
    }
    return SkyDriveEntry{*id, *name, *type == "folder", std::move(parent)};
}

}  // namespace

namespace SkyDriveReplies {

bool isItemId(std::string_view id) {
    static const std::regex shape("(folder|file)\\.[0-9a-fA-F]+(\\.[0-9a-fA-F]+![0-9]+)?");
    return id.size() <= kLongestId && std::regex_match(id.begin(), id.end(), shape);
}

std::optional<nlohmann::json> object(std::string_view body, std::string& error) {
    auto value = JsonReply::object(body, error);
    if (!value) return std::nullopt;
    removeNullKeys(*value);
    return value;
}

std::optional<SkyDriveEntry> entry(std::string_view body, std::string& error) {
    const auto reply = object(body, error);
    if (!reply) return std::nullopt;
    auto item = entryOf(*reply);
    if (!item) error = "The reply holds no usable folder or file";
    return item;
}

std::optional<SkyDriveEntry> uploadedFile(std::string_view body, std::string& error) {
    auto reply = object(body, error);
    if (!reply) return std::nullopt;
    if (!reply->contains("type")) (*reply)["type"] = "file";
    auto item = entryOf(*reply);
    if (!item || item->isFolder) {
        error = "The reply holds no uploaded file";
        return std::nullopt;
    }
    return item;
}

std::optional<SkyDriveListing> listing(std::string_view body, std::string& error) {
    const auto reply = object(body, error);
    if (!reply) return std::nullopt;
    SkyDriveListing listing;
    const auto data = reply->find("data");
    if (data == reply->end()) return listing;
    if (!data->is_array()) {
        error = "The reply holds no list of items";
        return std::nullopt;
    }
    for (const nlohmann::json& item : *data) {
        if (auto taken = entryOf(item)) {
            listing.entries.push_back(std::move(*taken));
        } else {
            ++listing.refused;
        }
    }
    return listing;
}

std::optional<std::string> userName(std::string_view body, std::string& error) {
    const auto reply = object(body, error);
    if (!reply) return std::nullopt;
    auto name = JsonReply::text(*reply, "name");
    if (!name) error = "The reply holds no user";
    return name;
}

std::optional<double> available(std::string_view body, std::string& error) {
    const auto reply = object(body, error);
    if (!reply) return std::nullopt;
    const auto value = reply->find("available");
    if (value == reply->end() || !value->is_number()) {
        error = "The reply holds no quota";
        return std::nullopt;
    }
    return value->get<double>();
}

std::optional<int> throttleSeconds(std::string_view body) {
    std::string ignored;
    const auto reply = object(body, ignored);
    if (!reply || !reply->contains("error") || !reply->at("error").is_object()) return std::nullopt;
    const std::string message = JsonReply::text(reply->at("error"), "message").value_or("");
    const auto after = message.rfind(" after ");
    if (after == std::string::npos) return std::nullopt;
    const std::string_view rest = std::string_view(message).substr(after + 7);
    int seconds = 0;
    const auto [end, failure] = std::from_chars(rest.data(), rest.data() + rest.size(), seconds);
    if (failure != std::errc() || seconds < 0 ||
        !std::string_view(end, rest.data() + rest.size()).starts_with(" seconds"))
        return std::nullopt;
    return seconds;
}

std::string errorText(const RestReply& reply) {
    std::string ignored;
    if (const auto body = object(reply.body, ignored)) {
        if (const auto error = body->find("error"); error != body->end() && error->is_object()) {
            if (const auto message = JsonReply::text(*error, "message"); message && !message->empty()) return *message;
        }
        if (const auto description = JsonReply::text(*body, "error_description"); description && !description->empty())
            return *description;
    }
    return reply.error.empty() ? "HTTP " + std::to_string(reply.status) : reply.error;
}

}  // namespace SkyDriveReplies

}  // namespace stowhaven
