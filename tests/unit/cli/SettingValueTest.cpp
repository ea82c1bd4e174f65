#include "cli/SettingInput.h"
#include "cli/SettingOutput.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

using Array = PlistValue::Array;
using Dictionary = PlistValue::Dictionary;

std::optional<PlistValue> parse(SettingKind kind, std::string_view text) {
    std::string problem;
    auto value = SettingInput::parse(kind, text, problem);
    EXPECT_EQ(value.has_value(), problem.empty()) << "a refusal, and only a refusal, says why";
    return value;
}

TEST(SettingInputTest, IntegersAreWholeNumbersAndNothingElse) {
    EXPECT_EQ(parse(SettingKind::Integer, "5"), PlistValue(5));
    EXPECT_EQ(parse(SettingKind::Integer, "-1"), PlistValue(-1));
    EXPECT_EQ(parse(SettingKind::Integer, "9223372036854775807"), PlistValue(INT64_MAX));
    for (const char* refused : {"abc", "1.5", "", "5 ", " 5", "0x10", "9223372036854775808", "true"}) {
        EXPECT_EQ(parse(SettingKind::Integer, refused), std::nullopt) << refused;
    }
}

TEST(SettingInputTest, FloatsAreFiniteNumbersStoredAsReals) {
    EXPECT_EQ(parse(SettingKind::Float, "0.35"), PlistValue(0.35));
    EXPECT_EQ(parse(SettingKind::Float, "1.5"), PlistValue(1.5)) << "the range is for the reader to judge";
    EXPECT_EQ(parse(SettingKind::Float, "1"), PlistValue(1.0)) << "a real even when whole";
    for (const char* refused : {"abc", "", "nan", "inf", "-inf", "0.5x", "0,5"}) {
        EXPECT_EQ(parse(SettingKind::Float, refused), std::nullopt) << refused;
    }
}

TEST(SettingInputTest, BooleansTakeTheUsualWordsInAnyCase) {
    for (const char* yes : {"true", "YES", "Yes", "1"}) EXPECT_EQ(parse(SettingKind::Boolean, yes), PlistValue(true));
    for (const char* no : {"false", "No", "0"}) EXPECT_EQ(parse(SettingKind::Boolean, no), PlistValue(false));
    for (const char* refused : {"2", "maybe", "", "truth"}) {
        EXPECT_EQ(parse(SettingKind::Boolean, refused), std::nullopt) << refused;
    }
}

TEST(SettingInputTest, TextsAreTakenAsTheyStandButDatesAndArraysAreNotTypedIn) {
    EXPECT_EQ(parse(SettingKind::String, "/Backups/my phone"), PlistValue("/Backups/my phone"));
    EXPECT_EQ(parse(SettingKind::String, ""), PlistValue(""));

    std::string problem;
    EXPECT_EQ(SettingInput::parse(SettingKind::Date, "2015-01-01", problem), std::nullopt);
    EXPECT_NE(problem.find("date"), std::string::npos) << problem;
    EXPECT_EQ(SettingInput::parse(SettingKind::Array, "en", problem), std::nullopt);
    EXPECT_EQ(SettingInput::parse(SettingKind::Integer, "abc", problem), std::nullopt);
    EXPECT_EQ(problem, "<abc> is no integer");
}

TEST(SettingOutputTest, ValuesPrintAsTheyWouldBeTypedIn) {
    EXPECT_EQ(SettingOutput::text(true), "true");
    EXPECT_EQ(SettingOutput::text(-1), "-1");
    EXPECT_EQ(SettingOutput::text(0.0), "0");
    EXPECT_EQ(SettingOutput::text(0.35), "0.35");
    EXPECT_EQ(SettingOutput::text("/Stowhaven"), "/Stowhaven");
    EXPECT_EQ(SettingOutput::json(Array{"en", 1, 0.5, false}), nlohmann::json::parse(R"(["en", 1, 0.5, false])"));
    EXPECT_EQ(SettingOutput::json(Date(0)), "2001-01-01 00:00:00 +0000");
}

TEST(SettingOutputTest, MaskingHidesPasswordsAndTokensButNotTheRest) {
    EXPECT_EQ(SettingOutput::masked("hunter2"), PlistValue("********"));
    EXPECT_EQ(SettingOutput::masked(""), PlistValue("")) << "no secret to hide";
    const PlistValue hosts = Array{Dictionary{{"host", "ftp.example.org"}, {"login", "owner"}, {"password", "pw"}},
                                   Dictionary{{"host", "nas.local"}, {"port", "21"}}};
    EXPECT_EQ(SettingOutput::masked(hosts),
              PlistValue(Array{Dictionary{{"host", "ftp.example.org"}, {"login", "owner"}, {"password", "********"}},
                               Dictionary{{"host", "nas.local"}, {"port", "21"}}}));
}

}  // namespace
}  // namespace stowhaven
