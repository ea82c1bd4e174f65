#include "platform/Strings.h"

#include "platform/Log.h"

#include <nlohmann/json.hpp>

#include <map>
#include <mutex>
#include <set>

namespace stowhaven {

namespace {

using Table = std::map<std::string, std::string, std::less<>>;

// A table that doesn't parse leaves every key answering itself: the program still runs,
// with its keys on show, and the log tells why.
Table parseTable(std::string_view text) {
    Table table;
    const auto json = nlohmann::json::parse(text, nullptr, false);
    if (!json.is_object()) {
        SH_LOG("The strings table is not a JSON object!");
        return table;
    }
    for (const auto& [key, value] : json.items()) {
        if (value.is_string()) {
            table.emplace(key, value.get<std::string>());
        } else {
            SH_LOG("Ignoring <{}>: its text is not a string", key);
        }
    }
    return table;
}

const Table& table() {
    static const Table parsed = parseTable(embeddedStringsTable());
    return parsed;
}

void reportMissingOnce(std::string_view key) {
    static std::mutex mutex;
    static std::set<std::string, std::less<>> reported;
    std::lock_guard lock(mutex);
    if (reported.contains(key)) return;
    reported.emplace(key);
    SH_LOG("No text for key <{}>", key);
}

}  // namespace

std::string Strings::localized(std::string_view key) {
    const auto entry = table().find(key);
    if (entry != table().end()) return entry->second;
    reportMissingOnce(key);
    return std::string(key);
}

std::string Strings::formatWith(std::string_view key, fmt::format_args args) {
    std::string text = localized(key);
    try {
        return fmt::vformat(text, args);
    } catch (const fmt::format_error& error) {
        SH_LOG("Can't format <{}> \"{}\": {}", key, text, error.what());
        return text;
    }
}

}  // namespace stowhaven
