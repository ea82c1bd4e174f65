#include "platform/Strings.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace stowhaven {
namespace {

using nlohmann::json;

json embeddedTable() { return json::parse(embeddedStringsTable()); }

// The keys in the order the file writes them; a parsed object would sort them and merge
// duplicates, hiding both faults.
std::vector<std::string> keysAsWritten(std::string_view text) {
    std::vector<std::string> keys;
    json::parser_callback_t collect = [&](int depth, json::parse_event_t event, json& parsed) {
        if (event == json::parse_event_t::key && depth == 1) keys.push_back(parsed.get<std::string>());
        return true;
    };
    const json parsed = json::parse(text, collect);
    return parsed.is_object() ? keys : std::vector<std::string>{};
}

// The distinct argument ids of a text's replacement fields: "{1:>4}" gives "1", "{}" gives "".
std::set<std::string> argumentIds(std::string_view text) {
    std::set<std::string> ids;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text.substr(at, 2) == "{{" || text.substr(at, 2) == "}}") {
            ++at;
        } else if (text[at] == '{') {
            const auto end = text.find_first_of(":}", at);
            ids.emplace(text.substr(at + 1, end - at - 1));
        }
    }
    return ids;
}

TEST(StringsTableTest, IsAFlatObjectOfNonEmptyTextsUnderUpperCaseKeysWithPlaceholdersNumberedFromZero) {
    const json table = embeddedTable();
    ASSERT_TRUE(table.is_object());
    for (const auto& [key, value] : table.items()) {
        EXPECT_TRUE(std::ranges::all_of(key, [](char c) {
            return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
        })) << key;
        ASSERT_TRUE(value.is_string()) << key;
        const std::string text = value.get<std::string>();
        EXPECT_FALSE(text.empty()) << key;
        const std::set<std::string> ids = argumentIds(text);
        std::set<std::string> contiguous;
        for (std::size_t i = 0; i < ids.size(); ++i) contiguous.insert(std::to_string(i));
        EXPECT_EQ(ids, contiguous) << key << ": " << text;
        EXPECT_NO_THROW(fmt::format(fmt::runtime(text), 'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i')) << key;
    }
}

TEST(StringsTableTest, KeysAreWrittenOnceInSortedOrder) {
    const auto keys = keysAsWritten(embeddedStringsTable());
    ASSERT_FALSE(keys.empty());
    for (std::size_t i = 1; i < keys.size(); ++i) EXPECT_LT(keys[i - 1], keys[i]) << "out of order or repeated";
}

TEST(StringsTest, FormatFillsEveryArgumentInItsPlaceAndOtherwiseAnswersTheBareTextOrTheKey) {
    const std::string text = Strings::format("NO_ENOUGH_SPACE", "<op>", "<name>", "<size>", "<free>", "<need>");
    for (const char* argument : {"<op>", "<name>", "<size>", "<free>", "<need>"}) {
        EXPECT_NE(text.find(argument), std::string::npos) << argument << " missing from " << text;
    }
    EXPECT_EQ(text.find('{'), std::string::npos) << text;
    EXPECT_LT(text.find("<op>"), text.find("<name>")) << "the operation word leads the data set's name";

    const std::string bare = Strings::localized("NO_ENOUGH_SPACE");
    EXPECT_EQ(Strings::format("NO_ENOUGH_SPACE"), bare);
    EXPECT_EQ(Strings::format("NO_ENOUGH_SPACE", "archive", "Photos"), bare);
    EXPECT_EQ(Strings::format("OK_BUTTON", 1, 2.5, "extra"), "OK");
    EXPECT_EQ(Strings::format("NOT_A_KEY", 42), "NOT_A_KEY");
    EXPECT_EQ(Strings::localized("ok_button"), "ok_button") << "keys are exact";
}

TEST(StringsTest, ConcurrentFirstUseAgrees) {
    std::vector<std::string> answers(16);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < answers.size(); ++i) {
        threads.emplace_back(
            [&answers, i] { answers[i] = Strings::localized(i % 2 == 0 ? "OK_BUTTON" : "MISSING_IN_EVERY_THREAD"); });
    }
    for (std::thread& thread : threads) thread.join();

    for (std::size_t i = 0; i < answers.size(); ++i) {
        EXPECT_EQ(answers[i], i % 2 == 0 ? "OK" : "MISSING_IN_EVERY_THREAD");
    }
}

}  // namespace
}  // namespace stowhaven
