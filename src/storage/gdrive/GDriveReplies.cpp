#include "storage/gdrive/GDriveReplies.h"

#include "net/JsonReply.h"
#include "net/OAuth2Grant.h"
#include "platform/AsciiCase.h"
#include "platform/FileNames.h"
#include "platform/Log.h"

#include <algorithm>
#include <charconv>

namespace stowhaven {

namespace {

constexpr std::size_t kLongestId = 256;

bool isDriveId(const std::string& text) {
    return !text.empty() && text.size() <= kLongestId && std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
    });
}

// Drive writes 64-bit numbers as JSON strings ("size": "1024").
std::optional<std::int64_t> int64Member(const nlohmann::json& object, const char* name) {
    if (const auto number = JsonReply::integer(object, name)) {
        if (*number < 0) return std::nullopt;
        return number;
    }
    const auto text = JsonReply::text(object, name);
    std::int64_t value = 0;
    if (!text || text->empty()) return std::nullopt;
    const auto [end, problem] = std::from_chars(text->data(), text->data() + text->size(), value);
    if (problem != std::errc() || end != text->data() + text->size() || value < 0) return std::nullopt;
    return value;
}

std::optional<GDriveFile> fileOf(const nlohmann::json& entry) {
    if (!entry.is_object()) return std::nullopt;
    const auto id = JsonReply::text(entry, "id");
    const auto name = JsonReply::text(entry, "name");
    if (!id || !name) return std::nullopt;
    if (!isDriveId(*id) || !isOneFileName(*name)) {
        SH_LOG("Refused the listed item <{}> of id <{}>", *name, *id);
        return std::nullopt;
    }
    return GDriveFile{*id, *name, JsonReply::text(entry, "mimeType").value_or(""), int64Member(entry, "size")};
}

}  // namespace

bool GDriveFile::isFolder() const { return equalsIgnoringAsciiCase(mimeType, kFolderType); }

namespace GDriveReplies {

std::optional<GDriveFile> file(std::string_view body, std::string& error) {
    const auto reply = JsonReply::object(body, error);
    if (!reply) return std::nullopt;
    auto made = fileOf(*reply);
    if (!made) error = "The reply holds no usable file record";
    return made;
}

std::optional<GDriveFilePage> filePage(std::string_view body, std::string& error) {
    const auto reply = JsonReply::object(body, error);
    if (!reply) return std::nullopt;
    const auto files = reply->find("files");
    if (files == reply->end() || !files->is_array()) {
        error = "The reply holds no list of files";
        return std::nullopt;
    }
    GDriveFilePage page;
    page.nextPageToken = JsonReply::text(*reply, "nextPageToken");
    if (page.nextPageToken && page.nextPageToken->empty()) page.nextPageToken.reset();
    for (const nlohmann::json& entry : *files) {
        if (auto file = fileOf(entry)) {
            page.files.push_back(std::move(*file));
        } else {
            ++page.refused;
        }
    }
    return page;
}

std::optional<GDriveAbout> about(std::string_view body, std::string& error) {
    const auto reply = JsonReply::object(body, error);
    if (!reply) return std::nullopt;
    const auto user = reply->find("user");
    const auto quota = reply->find("storageQuota");
    const auto email = user != reply->end() ? JsonReply::text(*user, "emailAddress") : std::nullopt;
    if (!email || quota == reply->end() || !quota->is_object()) {
        error = "The reply holds no user and quota";
        return std::nullopt;
    }
    GDriveAbout about{*email, std::nullopt, 0, 0};
    if (const auto limit = int64Member(*quota, "limit")) about.limit = static_cast<double>(*limit);
    about.usageInDrive = static_cast<double>(int64Member(*quota, "usageInDrive").value_or(0));
    about.usageInDriveTrash = static_cast<double>(int64Member(*quota, "usageInDriveTrash").value_or(0));
    return about;
}

std::string errorText(const RestReply& reply) {
    std::string ignored;
    if (const auto body = JsonReply::parse(reply.body, &ignored); body && body->is_object()) {
        const auto error = body->find("error");
        if (error != body->end() && error->is_object()) {
            if (const auto message = JsonReply::text(*error, "message"); message && !message->empty()) return *message;
        }
    }
    return OAuth2Grant::errorText(reply);
}

}  // namespace GDriveReplies

}  // namespace stowhaven
