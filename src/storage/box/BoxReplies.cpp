#include "storage/box/BoxReplies.h"

#include "net/JsonReply.h"
#include "platform/FileNames.h"
#include "platform/Log.h"

#include <algorithm>

namespace stowhaven {

namespace {

bool isPlainDigits(const std::string& text) {
    return !text.empty() && text.size() <= 32 &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// A folder or a file as listed; none for other kinds of item (web links) and for a name or
// an id that a listing must not give.
std::optional<BoxItem> itemOf(const nlohmann::json& entry) {
    const auto type = JsonReply::text(entry, "type");
    const auto id = JsonReply::text(entry, "id");
    const auto name = JsonReply::text(entry, "name");
    if (!type || (*type != "folder" && *type != "file") || !id || !name) return std::nullopt;
    if (!isPlainDigits(*id) || !isOneFileName(*name)) {
        SH_LOG("Refused the listed item <{}> of id <{}>", *name, *id);
        return std::nullopt;
    }
    return BoxItem{*id, *name, *type == "folder"};
}

std::optional<BoxItem> itemOfType(std::string_view body, const char* type, std::string& error) {
    const auto reply = JsonReply::object(body, error);
    if (!reply) return std::nullopt;
    const auto item = itemOf(*reply);
    if (!item || item->isFolder != (std::string_view(type) == "folder")) {
        error = std::string("The reply holds no usable ") + type;
        return std::nullopt;
    }
    return item;
}

}  // namespace

namespace BoxReplies {

std::optional<BoxItem> folder(std::string_view body, std::string& error) { return itemOfType(body, "folder", error); }

std::optional<BoxItemPage> itemPage(std::string_view body, std::string& error) {
    const auto reply = JsonReply::object(body, error);
    if (!reply) return std::nullopt;
    const auto entries = reply->find("entries");
    const auto total = JsonReply::integer(*reply, "total_count");
    if (entries == reply->end() || !entries->is_array() || !total || *total < 0) {
        error = "The reply holds no list of items";
        return std::nullopt;
    }
    BoxItemPage page;
    page.totalCount = *total;
    for (const nlohmann::json& entry : *entries) {
        if (auto item = itemOf(entry)) {
            page.entries.push_back(std::move(*item));
        } else {
            ++page.refused;
        }
    }
    return page;
}

std::optional<BoxItem> uploadedFile(std::string_view body, std::string& error) {
    const auto page = itemPage(body, error);
    if (!page) return std::nullopt;
    if (page->entries.size() != 1 || page->entries.front().isFolder) {
        error = "The reply holds no uploaded file";
        return std::nullopt;
    }
    return page->entries.front();
}

std::optional<BoxUser> user(std::string_view body, std::string& error) {
    const auto reply = JsonReply::object(body, error);
    if (!reply) return std::nullopt;
    const auto login = JsonReply::text(*reply, "login");
    if (!login) {
        error = "The reply holds no user";
        return std::nullopt;
    }
    return BoxUser{*login, JsonReply::integer(*reply, "space_amount").value_or(0),
                   JsonReply::integer(*reply, "space_used").value_or(0),
                   JsonReply::integer(*reply, "max_upload_size").value_or(0)};
}

std::string errorText(const RestReply& reply) {
    std::string ignored;
    if (const auto body = JsonReply::parse(reply.body, &ignored)) {
        if (const auto message = JsonReply::text(*body, "message"); message && !message->empty()) return *message;
        if (const auto description = JsonReply::text(*body, "error_description"); description && !description->empty())
            return *description;
    }
    return reply.error.empty() ? "HTTP " + std::to_string(reply.status) : reply.error;
}

}  // namespace BoxReplies

}  // namespace stowhaven
