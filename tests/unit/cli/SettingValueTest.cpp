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

// The program's settings test refuses the plain mistakes; here the edges of each kind.
TEST(SettingInputTest, EachKindTakesItsOwnTextsAndNothingElse) {
    EXPECT_EQ(parse(SettingKind::Integer, "9223372036854775807"), PlistValue(INT64_MAX));
    EXPECT_EQ(parse(SettingKind::Float, "1"), PlistValue(1.0)) << "a real even when whole";
    for (const char* yes : {"true", "YES", "Yes", "1"}) EXPECT_EQ(parse(SettingKind::Boolean, yes), PlistValue(true));
    for (const char* no : {"false", "No", "0"}) EXPECT_EQ(parse(SettingKind::Boolean, no), PlistValue(false));
    EXPECT_EQ(parse(SettingKind::String, ""), PlistValue(""));

    const std::pair<SettingKind, const char*> refused[] = {{SettingKind::Integer, ""},
                                                           {SettingKind::Integer, "5 "},
                                                           {SettingKind::Integer, " 5"},
                                                           {SettingKind::Integer, "0x10"},
                                                           {SettingKind::Integer, "9223372036854775808"},
                                                           {SettingKind::Float, "nan"},
                                                           {SettingKind::Float, "inf"},
                                                           {SettingKind::Float, "0,5"},
                                                           {SettingKind::Float, "0.5x"},
                                                           {SettingKind::Boolean, "2"},
                                                           {SettingKind::Boolean, "truth"},
                                                           {SettingKind::Array, "en"}};
    for (const auto& [kind, text] : refused) EXPECT_EQ(parse(kind, text), std::nullopt) << text;
}

TEST(SettingOutputTest, ValuesPrintAsTheyWouldBeTypedIn) {
    EXPECT_EQ(SettingOutput::text(0.0), "0");
    EXPECT_EQ(SettingOutput::text(0.35), "0.35");
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
    // Fields a secret's entry may gain later are hidden until known to be harmless.
    const PlistValue link = Array{Dictionary{{"uid", "12"}, {"oauth_token", "t0k"}, {"oauth_token_secret", "s3c"}}};
    EXPECT_EQ(
        SettingOutput::masked(link),
        PlistValue(Array{Dictionary{{"uid", "12"}, {"oauth_token", "********"}, {"oauth_token_secret", "********"}}}));
}

}  // namespace
}  // namespace stowhaven
