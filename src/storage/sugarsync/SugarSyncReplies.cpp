#include "storage/sugarsync/SugarSyncReplies.h"

#include "core/Text.h"
#include "platform/FileNames.h"
#include "storage/sugarsync/SugarSyncXml.h"

#include <charconv>
#include <chrono>
#include <regex>

namespace stowhaven::SugarSyncReplies {

namespace {

// The most of an error page shown to the user.
constexpr std::size_t kLongestErrorBody = 300;
// "2016-01-02T03:04:05.678901234-08:00" and a little more: no longer text is matched at all.
constexpr std::size_t kLongestDateTime = 48;

bool rootIs(const pugi::xml_document& document, const char* name, std::string& error) {
    if (std::string_view(document.document_element().name()) == name) return true;
    error = std::string("The reply is no <") + name + ">";
    return false;
}

std::optional<double> number(const std::string& text) {
    double value = 0;
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (problem != std::errc() || end != text.data() + text.size() || value < 0) return std::nullopt;
    return value;
}

int whole(const std::string& text) { return std::stoi(text); }

// A page's text for the user: the tags dropped, the blanks run together, cut short.
std::string textOfPage(std::string_view body) {
    std::string text;
    bool inTag = false;
    for (const char c : body) {
        if (c == '<') inTag = true;
        if (!inTag) {
            const bool blank = static_cast<unsigned char>(c) <= ' ';
            if (!blank) {
                text.push_back(c);
            } else if (!text.empty() && text.back() != ' ') {
                text.push_back(' ');
            }
        }
        if (c == '>') {
            inTag = false;
            if (!text.empty() && text.back() != ' ') text.push_back(' ');
        }
        if (text.size() >= kLongestErrorBody) break;
    }
    return textutil::trimmed(text);
}

}  // namespace

std::optional<Date> dateTime(std::string_view text) {
    if (text.size() > kLongestDateTime) return std::nullopt;
    static const std::regex kPattern(
        R"((\d{4})-(\d{2})-(\d{2})[T ](\d{2}):(\d{2}):(\d{2})(?:\.(\d{1,9}))?(Z|([+-])(\d{2}):?(\d{2})))");
    std::match_results<std::string_view::const_iterator> match;
    if (!std::regex_match(text.begin(), text.end(), match, kPattern)) return std::nullopt;
    using namespace std::chrono;
    const year_month_day day{year(whole(match[1].str())), month(static_cast<unsigned>(whole(match[2].str()))),
                             std::chrono::day(static_cast<unsigned>(whole(match[3].str())))};
    const int hours = whole(match[4].str());
    const int minutes = whole(match[5].str());
    const int seconds = whole(match[6].str());
    if (!day.ok() || hours > 23 || minutes > 59 || seconds > 60) return std::nullopt;
    double moment = static_cast<double>(sys_days(day).time_since_epoch().count()) * 86400.0 + hours * 3600.0 +
                    minutes * 60.0 + seconds;
    if (match[7].matched) moment += std::stod("0." + match[7].str());
    if (match[9].matched) {
        const int offset = whole(match[10].str()) * 3600 + whole(match[11].str()) * 60;
        moment -= (match[9].str() == "-" ? -1 : 1) * offset;
    }
    return Date::dateWithTimeIntervalSince1970(moment);
}

std::optional<std::string> decodedName(std::string_view displayName) {
    auto name = textutil::percentDecoded(displayName);
    if (!name || !isOneFileName(*name)) return std::nullopt;
    return name;
}

std::optional<SugarSyncAuthorization> authorization(std::string_view body, std::string& error) {
    pugi::xml_document document;
    if (!SugarSyncXml::parse(body, document, error) || !rootIs(document, "authorization", error)) return std::nullopt;
    const auto root = document.document_element();
    SugarSyncAuthorization reply;
    reply.userLink = SugarSyncXml::childText(root, "user");
    reply.expiration = dateTime(SugarSyncXml::childText(root, "expiration"));
    return reply;
}

std::optional<SugarSyncUser> user(std::string_view body, std::string& error) {
    pugi::xml_document document;
    if (!SugarSyncXml::parse(body, document, error) || !rootIs(document, "user", error)) return std::nullopt;
    const auto root = document.document_element();
    SugarSyncUser reply;
    reply.magicBriefcase = SugarSyncXml::childText(root, "magicBriefcase");
    const auto quota = root.child("quota");
    const auto limit = number(SugarSyncXml::childText(quota, "limit"));
    const auto usage = number(SugarSyncXml::childText(quota, "usage"));
    if (!limit || !usage || reply.magicBriefcase.empty()) {
        error = "The user record has no quota or no Magic Briefcase";
        return std::nullopt;
    }
    reply.limit = *limit;
    reply.usage = *usage;
    return reply;
}

std::optional<SugarSyncContents> contents(std::string_view body, std::string& error) {
    pugi::xml_document document;
    if (!SugarSyncXml::parse(body, document, error) || !rootIs(document, "collectionContents", error)) {
        return std::nullopt;
    }
    const auto root = document.document_element();
    SugarSyncContents reply;
    const auto take = [&reply](const pugi::xml_node& node, bool isFolder) {
        SugarSyncEntry entry;
        entry.isFolder = isFolder;
        entry.displayName = SugarSyncXml::childText(node, "displayName");
        entry.ref = SugarSyncXml::childText(node, "ref");
        entry.fileData = isFolder ? "" : SugarSyncXml::childText(node, "fileData");
        const auto name = decodedName(entry.displayName);
        if (!name || entry.ref.empty() || (!isFolder && entry.fileData.empty())) {
            reply.refused.push_back(entry.displayName);
            return;
        }
        entry.name = *name;
        reply.entries.push_back(std::move(entry));
    };
    for (const auto& collection : SugarSyncXml::elements(root, "collection")) {
        if (std::string_view(collection.attribute("type").value()) == "folder") take(collection, true);
    }
    for (const auto& file : SugarSyncXml::elements(root, "file")) {
        if (!file.attribute("type") && SugarSyncXml::childText(file, "presentOnServer") == "true") take(file, false);
    }
    return reply;
}

std::string errorText(const std::string& url, const RestReply& reply) {
    if (reply.code != CURLE_OK || reply.status == 0)
        return reply.error.empty() ? "No response from the server!" : reply.error;
    const std::string page = textOfPage(reply.body);
    if (reply.status >= 400 && reply.status < 500) return url + "\n" + reply.error + "\n" + page;
    return reply.error + "\n" + page;
}

}  // namespace stowhaven::SugarSyncReplies
