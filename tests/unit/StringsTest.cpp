#include "platform/Log.h"
#include "platform/Strings.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace stowhaven {
namespace {

using nlohmann::json;

// Texts that callers format, with the number of arguments each caller passes.
const std::map<std::string, std::size_t> kArgumentCounts = {
    {"ACTIVE_SYNC_LIMIT", 1},
    {"BACKUP_OF_DATE", 1},
    {"CONNECTING_TO_HOST", 1},
    {"DELETING_FROM", 1},
    {"ERROR_INSTALL_LOG", 1},
    {"MIN_BATTERY_LEVEL_MESSAGE", 1},
    {"NO_ENOUGH_SPACE", 5},
    {"NO_ENOUGH_SPACE_ON_CLOUD", 4},
    {"NO_FREE_SPACE_ON_CLOUD", 2},
    {"OPERATION_UNAVAILABLE_MESSAGE", 1},
    {"PROCESSING_ARCHIVABLE_FOLDER", 1},
    {"REMOVING_BACKUP_DATE", 1},
    {"RESTORING_MESSAGE", 1},
    {"SELECTED_PACKAGES_LABEL", 2},
    {"STORAGE_NOT_AVAILABLE_MESSAGE", 1},
    {"UPLOAD_LIMIT_WARNING_MESSAGE", 2},
};

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

class CapturedLog {
public:
    CapturedLog() {
        Log::setCapture([this](std::string_view line) { lines_.emplace_back(line); });
    }
    ~CapturedLog() { Log::setCapture({}); }

    std::size_t countContaining(std::string_view text) const {
        return std::ranges::count_if(lines_,
                                     [&](const std::string& line) { return line.find(text) != std::string::npos; });
    }

private:
    std::vector<std::string> lines_;
};

TEST(StringsTableTest, IsAFlatObjectOfNonEmptyTextsUnderUpperCaseKeys) {
    const json table = embeddedTable();
    ASSERT_TRUE(table.is_object());
    for (const auto& [key, text] : table.items()) {
        EXPECT_TRUE(std::ranges::all_of(key, [](char c) {
            return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
        })) << key;
        ASSERT_TRUE(text.is_string()) << key;
        EXPECT_FALSE(text.get<std::string>().empty()) << key;
    }
}

TEST(StringsTableTest, KeysAreWrittenOnceInSortedOrder) {
    const auto keys = keysAsWritten(embeddedStringsTable());
    ASSERT_FALSE(keys.empty());
    for (std::size_t i = 1; i < keys.size(); ++i) {
        EXPECT_LT(keys[i - 1], keys[i]) << "out of order or repeated";
    }
}

TEST(StringsTableTest, PlaceholdersAreNumberedFromZeroWithoutGaps) {
    const json table = embeddedTable();
    for (const auto& [key, value] : table.items()) {
        const std::string text = value.get<std::string>();
        const std::set<std::string> ids = argumentIds(text);
        std::set<std::string> contiguous;
        for (std::size_t i = 0; i < ids.size(); ++i) contiguous.insert(std::to_string(i));
        EXPECT_EQ(ids, contiguous) << key << ": " << text;
        EXPECT_NO_THROW(fmt::format(fmt::runtime(text), 'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i')) << key;
    }
}

TEST(StringsTableTest, FormattedTextsTakeTheArgumentsTheirCallersPass) {
    const json table = embeddedTable();
    std::map<std::string, std::size_t> counts;
    for (const auto& [key, value] : table.items()) {
        const std::size_t count = argumentIds(value.get<std::string>()).size();
        if (count > 0) counts[key] = count;
    }
    EXPECT_EQ(counts, kArgumentCounts);
}

TEST(StringsTest, EveryKeyAnswersItsTextIncludingMisspeltKeys) {
    const json table = embeddedTable();
    for (const auto& [key, text] : table.items()) {
        EXPECT_EQ(Strings::localized(key), text.get<std::string>()) << key;
    }
    EXPECT_EQ(Strings::localized("OK_BUTTON"), "OK");
    EXPECT_EQ(Strings::localized("WARNING"), "Warning");
    EXPECT_NE(Strings::localized("NO_INTENET_CONNECTION"), "NO_INTENET_CONNECTION");
}

TEST(StringsTest, UnknownKeyAnswersItselfAndIsLoggedOnce) {
    CapturedLog log;
    EXPECT_EQ(Strings::localized("NOT_A_KEY"), "NOT_A_KEY");
    EXPECT_EQ(Strings::localized("NOT_A_KEY"), "NOT_A_KEY");
    EXPECT_EQ(Strings::format("NOT_A_KEY", 42), "NOT_A_KEY");
    EXPECT_EQ(Strings::localized("ok_button"), "ok_button");
    EXPECT_EQ(log.countContaining("<NOT_A_KEY>"), 1u);
    EXPECT_EQ(log.countContaining("<ok_button>"), 1u);
}

TEST(StringsTest, FormatFillsEveryArgumentInItsPlace) {
    EXPECT_NE(Strings::format("CONNECTING_TO_HOST", "ftp.example.org").find("ftp.example.org"), std::string::npos);

    const std::string text = Strings::format("NO_ENOUGH_SPACE", "<op>", "<name>", "<size>", "<free>", "<need>");
    for (const char* argument : {"<op>", "<name>", "<size>", "<free>", "<need>"}) {
        EXPECT_NE(text.find(argument), std::string::npos) << argument << " missing from " << text;
    }
    EXPECT_EQ(text.find('{'), std::string::npos) << text;
    EXPECT_LT(text.find("<op>"), text.find("<name>")) << "the operation word leads the data set's name";
}

TEST(StringsTest, ArgumentsThatDontFitAnswerTheBareTextWithoutThrowing) {
    CapturedLog log;
    const std::string bare = Strings::localized("NO_ENOUGH_SPACE");
    EXPECT_EQ(Strings::format("NO_ENOUGH_SPACE"), bare);
    EXPECT_EQ(Strings::format("NO_ENOUGH_SPACE", "archive", "Photos"), bare);
    EXPECT_EQ(log.countContaining("Can't format <NO_ENOUGH_SPACE>"), 2u);

    EXPECT_EQ(Strings::format("OK_BUTTON", 1, 2.5, "extra"), "OK");
}

TEST(StringsTest, ConcurrentFirstUseAgreesAndLogsAMissingKeyOnce) {
    CapturedLog log;
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
    EXPECT_EQ(log.countContaining("<MISSING_IN_EVERY_THREAD>"), 1u);
}

}  // namespace
}  // namespace stowhaven
